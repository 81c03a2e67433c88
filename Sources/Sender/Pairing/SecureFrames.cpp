#include "Sender/Pairing/SecureFrames.h"

#include "Sender/Pairing/Crypto.h"

#include <QtEndian>

#include <algorithm>
#include <optional>

namespace velmora {

namespace {

constexpr qsizetype lengthSize = 2;
constexpr qsizetype maximumBlock = 1024;

QByteArray nonce(quint64 counter) {
    QByteArray bytes(12, '\0');
    qToLittleEndian(counter, bytes.data() + 4);
    return bytes;
}

}  // namespace

namespace SecureChannel {

ChannelKeys control(const Secret& shared) {
    return {Crypto::hkdf(shared, "Control-Salt", "Control-Write-Encryption-Key"),
            Crypto::hkdf(shared, "Control-Salt", "Control-Read-Encryption-Key")};
}

// Here "write" is the receiver's view, because it is the one that asks.
ChannelKeys events(const Secret& shared) {
    return {Crypto::hkdf(shared, "Events-Salt", "Events-Read-Encryption-Key"),
            Crypto::hkdf(shared, "Events-Salt", "Events-Write-Encryption-Key")};
}

ChannelKeys data(const Secret& shared, quint64 seed) {
    const QByteArray salt = "DataStream-Salt" + QByteArray::number(seed);
    return {Crypto::hkdf(shared, salt, "DataStream-Output-Encryption-Key"),
            Crypto::hkdf(shared, salt, "DataStream-Input-Encryption-Key")};
}

}  // namespace SecureChannel

QByteArray FrameSealer::seal(QByteArrayView plain) {
    QByteArray frames;
    while (!plain.isEmpty()) {
        const QByteArrayView block = plain.first(std::min(plain.size(), maximumBlock));
        QByteArray length(lengthSize, Qt::Uninitialized);
        qToLittleEndian(static_cast<quint16>(block.size()), length.data());
        frames += length + Crypto::seal(key_, nonce(counter_++), block, length);
        plain = plain.sliced(block.size());
    }
    return frames;
}

std::expected<QByteArray, FrameOpener::Error> FrameOpener::open(QByteArrayView bytes) {
    if (failed_) return std::unexpected(Error::forged);
    pending_ += bytes;
    QByteArray text;
    QByteArrayView rest = pending_;
    while (rest.size() >= lengthSize) {
        const QByteArrayView length = rest.first(lengthSize);
        const qsizetype sealedSize = qFromLittleEndian<quint16>(length.data()) + Crypto::tagSize;
        if (rest.size() < lengthSize + sealedSize) break;
        const std::optional<QByteArray> plain =
            Crypto::open(key_, nonce(counter_++), rest.sliced(lengthSize, sealedSize), length);
        failed_ = !plain;
        if (failed_) return std::unexpected(Error::forged);
        text += *plain;
        rest = rest.sliced(lengthSize + sealedSize);
    }
    pending_.remove(0, pending_.size() - rest.size());
    return text;
}

}  // namespace velmora
