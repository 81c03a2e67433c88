#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <expected>
#include <optional>

namespace velmora {

/// What the data stream of a session carries: a message, or the answer that it arrived.
struct DataFrame {
    enum class Kind { message, reply };

    static constexpr qsizetype headBytes = 32;
    static constexpr qsizetype mostBytes = 256 * 1024;  ///< with the head; real frames stay far below

    Kind kind = Kind::message;
    quint64 sequence = 0;  ///< a reply repeats that of its message
    QByteArray body;

    /// As this side sends it: the command's name differs by direction.
    [[nodiscard]] QByteArray encoded() const;
    bool operator==(const DataFrame&) const = default;
};

/// Bytes in, frames out. Holds back at most one incomplete frame.
class DataFrameReader {
  public:
    void feed(QByteArrayView bytes) { buffer_.append(bytes); }

    /// The next complete frame; nothing while bytes are missing; or what is wrong with the bytes, for good.
    [[nodiscard]] std::expected<std::optional<DataFrame>, QString> next();

  private:
    QByteArray buffer_;
};

}  // namespace velmora
