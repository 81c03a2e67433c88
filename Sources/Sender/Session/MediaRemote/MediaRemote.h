#pragma once

#include "MediaRemote.pb.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>
#include <vector>

/// The messages between a remote control and a receiver, as values. Those made here carry no identifiers of
/// their own but the one that their answer repeats, where there is an answer.
namespace velmora::MediaRemote {

using remote::Envelope;

enum Type : int {
    sendCommand = 1,
    commandResult = 2,
    setState = 4,
    deviceInfo = 15,
    wantedUpdates = 16,
    deviceInfoUpdate = 37,
    connectionState = 38,
    wakeDevice = 41,
    generic = 42,
    updateContentItem = 56,
};

/// Numbers as receivers know them.
enum class Command : int { play = 1, pause = 2, stop = 4, seek = 45 };

/// Who speaks: what a receiver wants to know about a remote control.
struct Identity {
    QString identifier;  ///< a UUID, the same on every connection
    QString name;        ///< what to call this sender
};

[[nodiscard]] Envelope introduction(const Identity& identity, const QString& identifier);
[[nodiscard]] Envelope connected();
[[nodiscard]] Envelope updatesWish(const QString& identifier);
[[nodiscard]] Envelope heartbeat(const QString& identifier);
[[nodiscard]] Envelope wake();
/// `position`: seconds, with `Command::seek`. Without a `player` the active one is meant.
[[nodiscard]] Envelope command(Command command, std::optional<double> position,
                               const std::optional<remote::PlayerPath>& player, const QString& identifier);

/// Whether a command was carried out; otherwise what the receiver says, for the log.
[[nodiscard]] std::optional<QString> failureIn(const Envelope& answer);

/// One message with its length in front.
[[nodiscard]] QByteArray packed(const Envelope& message);
/// All messages of one frame; nothing when the bytes are damaged, or too many messages.
[[nodiscard]] std::optional<std::vector<Envelope>> unpacked(QByteArrayView bytes);

}  // namespace velmora::MediaRemote
