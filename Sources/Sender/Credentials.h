#pragma once

#include "Sender/Pairing/HapPairing.h"
#include "Sender/Pairing/LegacyPairing.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace velmora {

/// What this sender has to show to a receiver.
struct Credentials {
    std::optional<HapCredentials> pairing;
    std::optional<LegacyCredentials> legacyPairing;
    QString password;  ///< empty: none

    [[nodiscard]] bool isEmpty() const { return !pairing && !legacyPairing && password.isEmpty(); }

    /// As text, for safe keeping.
    [[nodiscard]] QByteArray encoded() const;
    /// What makes no sense in it is left out.
    [[nodiscard]] static Credentials decoded(const QByteArray& text);
};

}  // namespace velmora
