#pragma once

#include "Sender/Pairing/Crypto.h"

#include <QByteArray>

#include <initializer_list>
#include <memory>
#include <ostream>
#include <utility>

/// Known values, computed by two independent programs; see vectors.json.
namespace velmora::test {

/// The bytes of a vector in hexadecimal digits. Fails the program if there is none.
[[nodiscard]] QByteArray vector(const QByteArray& name);
/// A vector that is text.
[[nodiscard]] QByteArray textVector(const QByteArray& name);
[[nodiscard]] inline Secret secretVector(const QByteArray& name) {
    return Secret(QByteArrayView(vector(name)));
}

/// Hands out these vectors in turn instead of random bytes.
[[nodiscard]] Crypto::RandomSource scripted(std::initializer_list<const char*> names);

[[nodiscard]] QByteArray sha256(const QByteArray& bytes);

/// The bytes with one of them changed.
[[nodiscard]] inline QByteArray damaged(QByteArray bytes, qsizetype position) {
    bytes[position] = static_cast<char>(bytes[position] ^ 0x80);
    return bytes;
}

}  // namespace velmora::test

/// So that failed comparisons print digits. The name is GoogleTest's.
// NOLINTNEXTLINE(readability-identifier-naming)
void PrintTo(const QByteArray& bytes, std::ostream* stream);
