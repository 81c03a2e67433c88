#pragma once

#include <QByteArray>
#include <QString>

#include <expected>
#include <optional>

namespace velmora::test {

/// A frame of a data stream, as a receiver reads and writes it.
struct RemoteFrame {
    bool isReply = false;
    quint64 sequence = 0;
    QByteArray payload;  ///< the messages; empty in a reply

    [[nodiscard]] QByteArray encoded() const;

    /// Takes the first whole frame off the bytes; nothing while some are missing; or what is wrong with them.
    [[nodiscard]] static std::expected<std::optional<RemoteFrame>, QString> take(QByteArray& bytes);
};

}  // namespace velmora::test
