#pragma once

#include "Sender/Pairing/Secret.h"

#include <QByteArray>
#include <QByteArrayView>

#include <expected>

/// What a connection carries once it is paired: blocks of up to 64 KiB, each sealed under the next number.
/// The messages inside are one byte stream; a block may end in the middle of one.
namespace velmora {

struct ChannelKeys {
    Secret encrypt;
    Secret decrypt;
};

/// The sender's keys, from what pair-verify or transient pair-setup agreed on; a receiver swaps them.
namespace SecureChannel {
[[nodiscard]] ChannelKeys control(const Secret& shared);
/// The connection on which the receiver asks and the sender answers.
[[nodiscard]] ChannelKeys events(const Secret& shared);
/// A stream of its own, told apart by the seed it was set up with.
[[nodiscard]] ChannelKeys data(const Secret& shared, quint64 seed);
}  // namespace SecureChannel

/// Seals one direction of one connection.
class FrameSealer {
  public:
    explicit FrameSealer(Secret key) : key_(std::move(key)) {}

    /// The frames of this text, each of at most 1024 bytes before sealing: receivers take no longer ones.
    [[nodiscard]] QByteArray seal(QByteArrayView plain);

  private:
    Secret key_;
    quint64 counter_ = 0;
};

/// Opens the other one. Holds back at most one incomplete frame.
class FrameOpener {
  public:
    enum class Error {
        forged,  ///< a frame that was altered, repeated, left out or sealed under another key
    };

    explicit FrameOpener(Secret key) : key_(std::move(key)) {}

    /// Takes the next bytes from the connection, however they were cut, and returns the text of the frames
    /// that are complete now. After an error the connection is of no more use, and every further call fails.
    [[nodiscard]] std::expected<QByteArray, Error> open(QByteArrayView bytes);

    /// Whether the connection may end here: no frame is incomplete.
    [[nodiscard]] bool isBetweenFrames() const { return pending_.isEmpty(); }

  private:
    Secret key_;
    quint64 counter_ = 0;
    QByteArray pending_;
    bool failed_ = false;
};

}  // namespace velmora
