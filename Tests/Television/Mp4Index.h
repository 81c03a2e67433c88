#pragma once

#include <QByteArray>

#include <optional>

namespace velmora::test {

/// Finds a movie's duration in its index, from the bytes as they come in.
class Mp4Index {
  public:
    explicit Mp4Index(qint64 fileSize) : fileSize_(fileSize) {}

    enum class Need {
        more,    ///< the bytes that follow
        jump,    ///< those from `offset`: the index lies behind the media
        done,    ///< nothing: the whole index was read
        broken,  ///< this is no movie, or one without an index
    };
    [[nodiscard]] Need feed(const QByteArray& bytes);

    [[nodiscard]] qint64 offset() const { return cursor_; }
    /// What comes next begins at `offset`.
    void jumped();
    [[nodiscard]] double duration() const { return duration_.value_or(0); }

  private:
    [[nodiscard]] Need more();
    [[nodiscard]] QByteArray at(qint64 length) const;
    [[nodiscard]] bool enter(const QByteArray& header);
    [[nodiscard]] bool readDuration(const QByteArray& box);

    qint64 fileSize_;
    QByteArray buffer_;
    qint64 bufferStart_ = 0;
    qint64 cursor_ = 0;  // of the next box
    qint64 indexEnd_ = 0;
    std::optional<double> duration_;
};

}  // namespace velmora::test
