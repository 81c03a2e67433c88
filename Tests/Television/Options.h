#pragma once

#include "Television/Misbehaviour.h"

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QString>

#include <optional>

namespace velmora::test {

/// Which television it is.
struct TelevisionOptions {
    /// How a sender comes to be trusted.
    enum class Flavour {
        plain,
        password,    ///< plain, and `password` has to be proved
        legacyKeys,  ///< keys exchanged openly, then a proof on each connection
        legacyPin,   ///< a PIN, then a proof on each connection
        transient,   ///< the encrypted session, without PIN
        paired,      ///< the encrypted session, with a PIN
    };
    /// How it takes movies in an encrypted session.
    enum class Handover { play, queue };

    QString name = QStringLiteral("Television");
    QHostAddress address{QHostAddress::LocalHost};
    quint16 port = 0;  ///< 0: any
    Misbehaviours misbehaviours{};
    Flavour flavour = Flavour::plain;
    Handover handover = Handover::play;
    QString pin = QStringLiteral("1234");
    QString password{};       ///< asked for in every flavour unless it is empty
    QString model{};          ///< empty: one that fits the flavour
    QString systemVersion{};  ///< empty: one that fits, for Apple's models; the others do not tell
    bool publish = false;     ///< announce it through Avahi
    QString busAddress{};     ///< of the bus with Avahi on it; empty: the system's

    [[nodiscard]] static std::optional<Flavour> readFlavour(const QString& text);
    [[nodiscard]] static std::optional<Handover> readHandover(const QString& text);

    /// The same with nothing left to be chosen.
    [[nodiscard]] TelevisionOptions completed() const;

    [[nodiscard]] bool isEncrypted() const {
        return flavour == Flavour::transient || flavour == Flavour::paired;
    }
    [[nodiscard]] bool isLegacy() const {
        return flavour == Flavour::legacyKeys || flavour == Flavour::legacyPin;
    }
    [[nodiscard]] bool hasQueue() const { return isEncrypted() && handover == Handover::queue; }
    [[nodiscard]] bool isApples() const { return model.startsWith(QLatin1String("AppleTV")); }
    [[nodiscard]] bool isComputer() const { return model.startsWith(QLatin1String("Mac")); }
    [[nodiscard]] bool does(Misbehaviour misbehaviour) const { return misbehaviours.contains(misbehaviour); }
    [[nodiscard]] double numberOf(Misbehaviour misbehaviour) const {
        return misbehaviours.value(misbehaviour);
    }
};

// What it tells of itself, as fits its options.

/// A hardware address that follows from the name.
[[nodiscard]] QString deviceIdentifier(const TelevisionOptions& options);
[[nodiscard]] QString sourceVersion(const TelevisionOptions& options);
[[nodiscard]] quint64 features(const TelevisionOptions& options);
[[nodiscard]] quint64 statusFlags(const TelevisionOptions& options);

/// The strings of the TXT record beside `_airplay._tcp`.
[[nodiscard]] QList<QByteArray> announcement(const TelevisionOptions& options);

}  // namespace velmora::test
