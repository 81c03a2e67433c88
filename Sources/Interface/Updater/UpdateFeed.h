#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QString>
#include <QUrl>
#include <QVersionNumber>

#include <expected>

namespace velmora {

/// What the publisher says about the newest version. A value.
///
/// On the wire it is one JSON object of two base64 texts: "payload", again JSON, and "signature", the Ed25519
/// signature of the payload's bytes. Nothing of a payload is looked at before its signature fits.
struct UpdateFeed {
    QVersionNumber version;
    QString notes;     ///< plain text for the user
    QUrl page;         ///< where to get it; https
    QDateTime issued;  ///< UTC

    enum class Refusal {
        damaged,    ///< not a feed, or one that makes no sense
        notSigned,  ///< no signature, or one that does not fit the publisher's key
        foreign,    ///< about another product
        outdated,   ///< issued before one that was accepted earlier: someone plays back an old one
    };

    static constexpr qsizetype maxSize = 256 << 10;  // bytes

    /// `key`: the publisher's Ed25519 key, 32 bytes. `notBefore`: the issue of the feed accepted last;
    /// invalid when there was none.
    [[nodiscard]] static std::expected<UpdateFeed, Refusal> read(QByteArrayView bytes, QByteArrayView key,
                                                                 const QDateTime& notBefore);

    /// A whole sentence for the user.
    [[nodiscard]] static QString explain(Refusal refusal);
};

}  // namespace velmora
