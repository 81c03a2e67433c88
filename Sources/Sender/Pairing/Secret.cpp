#include "Sender/Pairing/Secret.h"

#include <openssl/crypto.h>

namespace velmora {

Secret Secret::fromText(QStringView text) {
    QByteArray utf8 = text.toUtf8();
    Secret secret{QByteArrayView(utf8)};
    OPENSSL_cleanse(utf8.data(), static_cast<size_t>(utf8.size()));
    return secret;
}

// What was here before leaves with `other`, which wipes it.
Secret& Secret::operator=(Secret other) noexcept {
    bytes_.swap(other.bytes_);
    return *this;
}

Secret::~Secret() {
    OPENSSL_cleanse(bytes_.data(), bytes_.size());
}

}  // namespace velmora
