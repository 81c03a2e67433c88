#include "Interface/Updater/UpdateFeed.h"

#include "Sender/Pairing/Crypto.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Updater)
};

constexpr auto product = "com.quillet.velmora"_L1;
constexpr qsizetype maxNotes = 20'000;  // characters

std::optional<QByteArray> base64(const QJsonValue& value) {
    if (!value.isString()) return std::nullopt;
    auto decoded =
        QByteArray::fromBase64Encoding(value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) return std::nullopt;
    return *decoded;
}

/// Numbers and full stops only: "1.2", "1.10.3".
std::optional<QVersionNumber> version(const QString& text) {
    qsizetype suffix = 0;
    QVersionNumber number = QVersionNumber::fromString(text, &suffix);
    if (number.isNull() || suffix != text.size()) return std::nullopt;
    return number;
}

std::optional<UpdateFeed> readPayload(const QJsonObject& payload) {
    const auto number = version(payload[u"version"].toString());
    const QUrl page(payload[u"page"].toString(), QUrl::StrictMode);
    const QDateTime issued = QDateTime::fromString(payload[u"issued"].toString(), Qt::ISODate);
    const QString notes = payload[u"notes"].toString();
    const bool isPageSafe = page.isValid() && page.scheme() == "https"_L1 && !page.host().isEmpty();
    if (!number || !isPageSafe || !issued.isValid() || issued.timeSpec() != Qt::UTC ||
        notes.size() > maxNotes)
        return std::nullopt;
    return UpdateFeed{*number, notes, page, issued};
}

}  // namespace

std::expected<UpdateFeed, UpdateFeed::Refusal> UpdateFeed::read(QByteArrayView bytes, QByteArrayView key,
                                                                const QDateTime& notBefore) {
    if (bytes.size() > maxSize) return std::unexpected(Refusal::damaged);
    const QJsonDocument envelope = QJsonDocument::fromJson(bytes.toByteArray());
    const auto payload = base64(envelope[u"payload"]);
    if (!payload) return std::unexpected(Refusal::damaged);
    const auto signature = base64(envelope[u"signature"]);
    if (!signature || !Crypto::verify(key, *payload, *signature)) return std::unexpected(Refusal::notSigned);

    const QJsonDocument document = QJsonDocument::fromJson(*payload);
    if (!document.isObject()) return std::unexpected(Refusal::damaged);
    if (document[u"product"].toString() != product) return std::unexpected(Refusal::foreign);
    const auto feed = readPayload(document.object());
    if (!feed) return std::unexpected(Refusal::damaged);
    if (notBefore.isValid() && feed->issued < notBefore) return std::unexpected(Refusal::outdated);
    return *feed;
}

QString UpdateFeed::explain(Refusal refusal) {
    switch (refusal) {
        case Refusal::damaged:
            return Texts::tr("What the update server sent is damaged. Try again later.");
        case Refusal::notSigned:
            return Texts::tr(
                "What the update server sent is not signed by Velmora's publisher, so it was ignored.");
        case Refusal::foreign:
            return Texts::tr("What the update server sent is about another program, so it was ignored.");
        case Refusal::outdated:
            return Texts::tr(
                "The update server sent older news than last time, so it was ignored. Try again later.");
    }
    return {};
}

}  // namespace velmora
