#pragma once

#include <QByteArrayView>
#include <QVariant>

#include <optional>

namespace velmora {

/// Reads one binary property list (`bplist00`). References between its values may form circles, or share one
/// value so often that a few kilobytes would unfold into gigabytes; depth and number of values are bounded.
class BinaryPlist {
  public:
    /// `bytes` must outlive the reader.
    explicit BinaryPlist(QByteArrayView bytes) : bytes_(bytes) {}

    /// The value; nothing when the bytes are damaged or beyond the bounds.
    [[nodiscard]] std::optional<QVariant> decode();

  private:
    struct Object {
        int kind;
        qsizetype count;  ///< children, characters, bytes; or the low half of the marker
        qsizetype at;     ///< of the first byte behind marker and count
    };

    [[nodiscard]] std::optional<quint64> number(qsizetype at, qsizetype width) const;
    [[nodiscard]] std::optional<QByteArrayView> bytes(qsizetype at, qsizetype count) const;
    [[nodiscard]] std::optional<Object> objectAt(quint64 index) const;
    [[nodiscard]] std::optional<QVariant> value(quint64 index, int depth);
    [[nodiscard]] std::optional<QVariant> simple(const Object& object) const;
    [[nodiscard]] std::optional<QVariant> integer(const Object& object) const;
    [[nodiscard]] std::optional<QVariant> real(const Object& object) const;
    [[nodiscard]] std::optional<QVariant> text(const Object& object) const;
    [[nodiscard]] std::optional<QVariant> array(const Object& object, int depth);
    [[nodiscard]] std::optional<QVariant> dictionary(const Object& object, int depth);
    [[nodiscard]] std::optional<QVariant> child(const Object& object, qsizetype position, int depth);

    QByteArrayView bytes_;
    qsizetype offsetWidth_ = 0;
    qsizetype referenceWidth_ = 0;
    quint64 objects_ = 0;
    quint64 table_ = 0;
    int values_ = 0;
};

}  // namespace velmora
