#pragma once

#include <QByteArrayView>

namespace velmora {

/// The part of a resource that a `Range` header asks for (RFC 9110, section 14).
struct ByteRange {
    enum class Kind {
        whole,          ///< answered 200: no range, or one that a server is to ignore
        part,           ///< answered 206
        unsatisfiable,  ///< answered 416
    };
    Kind kind = Kind::whole;
    qint64 offset = 0;
    qint64 length = 0;

    [[nodiscard]] qint64 end() const { return offset + length; }

    /// `header` is the value of `Range`, empty when there was none; `size` the resource's length in bytes.
    ///
    /// Malformed values, other units and several ranges at once give `whole`, which is always a correct
    /// answer. An end past the resource is clipped, whatever its number of digits.
    [[nodiscard]] static ByteRange parse(QByteArrayView header, qint64 size);
};

}  // namespace velmora
