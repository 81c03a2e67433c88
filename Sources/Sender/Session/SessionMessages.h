#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace velmora {

/// What a session's two ends measure time by.
enum class Timing {
    precise,  ///< PTP by name only: for video no clock needs to run
    network,  ///< NTP: the receiver asks, this sender answers
    none,     ///< sessions without media
};

/// Who this sender is to receivers: the same on each start.
struct SenderIdentity {
    QString address;     ///< in the form of a network card's, made up
    QString identifier;  ///< a UUID in upper case
    QString name;        ///< what to call it in front of the user

    [[nodiscard]] static SenderIdentity ofThisComputer();
};

/// A new UUID as receivers write them: 36 characters, upper case.
[[nodiscard]] QString newIdentifier();

/// The bodies of a session's requests, as values.
namespace SessionMessages {

struct Setup {
    Timing timing = Timing::precise;
    SenderIdentity sender;
    QString session;         ///< a UUID
    QString peer;            ///< another one
    QHostAddress local;      ///< of this computer, as the receiver sees it
    quint16 timingPort = 0;  ///< with `Timing::network`: where this sender answers
    QString sourceVersion;   ///< of the AirPlay stack that this sender behaves like
};
/// The first `SETUP`.
[[nodiscard]] QVariantMap setup(const Setup& setup);

/// The stream that carries the commands of the play queue. `channel`: where the receiver's own identifier is
/// known, that; it is not checked.
[[nodiscard]] QVariantMap queueStream(const QString& channel);
/// The stream of a remote control, with a socket of its own, whose keys depend on the seed (below 2^63).
[[nodiscard]] QVariantMap remoteStream(quint64 seed);
/// The later `SETUP`.
[[nodiscard]] QVariantMap streams(const QVariantMap& stream);
/// The first stream of its answer.
[[nodiscard]] QVariantMap firstStream(const QVariant& answer);

/// The address without the scope that means something on one computer only.
[[nodiscard]] QString plainText(const QHostAddress& address);

/// The envelope in which commands, events and remote control's messages travel.
[[nodiscard]] QVariantMap wrapped(const QByteArray& content);
/// What is in the envelope; nothing when it is none.
[[nodiscard]] std::optional<QByteArray> unwrapped(const QVariantMap& envelope);

}  // namespace SessionMessages

}  // namespace velmora
