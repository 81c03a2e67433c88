#include "Sender/Pairing/Digest.h"

#include <QCryptographicHash>
#include <QHash>
#include <QList>

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr qsizetype maximumHeaderSize = 4096;

using Fields = QHash<QByteArray, QByteArray>;

/// The MD5 of the parts with colons between, in lower-case hexadecimal digits. Qt's, because OpenSSL has none
/// where it is bound to approved algorithms.
QByteArray hash(std::initializer_list<QByteArrayView> parts) {
    QCryptographicHash md5(QCryptographicHash::Md5);
    bool first = true;
    for (const QByteArrayView part : parts) {
        if (!std::exchange(first, false)) md5.addData(":");
        md5.addData(part);
    }
    return md5.result().toHex();
}

bool isControl(char letter) {
    const auto code = static_cast<uchar>(letter);
    return (code < 0x20 && code != '\t') || code == 0x7F;
}

/// Cuts the text before `end` off the front of `text`; nothing if there is no `end`.
std::optional<QByteArrayView> takeUntil(QByteArrayView& text, char end) {
    const qsizetype position = text.indexOf(end);
    if (position < 0) return std::nullopt;
    const QByteArrayView taken = text.first(position);
    text = text.sliced(position + 1);
    return taken;
}

/// The value after a "=", quoted or not, and what separates it from the next field.
std::optional<QByteArrayView> takeValue(QByteArrayView& text) {
    text = text.trimmed();
    if (!text.startsWith('"')) {
        const std::optional<QByteArrayView> value = takeUntil(text, ',');
        return value ? value->trimmed() : std::exchange(text, {}).trimmed();
    }
    text = text.sliced(1);
    const std::optional<QByteArrayView> value = takeUntil(text, '"');
    text = text.trimmed();
    if (!text.isEmpty() && !text.startsWith(',')) return std::nullopt;
    if (!text.isEmpty()) text = text.sliced(1);
    return value;
}

/// The comma-separated `key=value` pairs, the keys in lower case; nothing if one is malformed or comes twice.
std::optional<Fields> parseFields(QByteArrayView text) {
    Fields fields;
    while (!(text = text.trimmed()).isEmpty()) {
        const std::optional<QByteArrayView> key = takeUntil(text, '=');
        const std::optional<QByteArrayView> value = key ? takeValue(text) : std::nullopt;
        if (!value) return std::nullopt;
        const QByteArray name = key->trimmed().toByteArray().toLower();
        if (name.isEmpty() || fields.contains(name)) return std::nullopt;
        fields.insert(name, value->toByteArray());
    }
    return fields;
}

bool offersAuth(const QByteArray& qualities) {
    const QList<QByteArray> list = qualities.split(',');
    return std::ranges::any_of(list, [](const QByteArray& quality) { return quality.trimmed() == "auth"; });
}

QByteArray quoted(const char* name, QByteArrayView value) {
    return QByteArray(name) + "=\"" + value.toByteArray() + '"';
}

}  // namespace

std::optional<DigestChallenge> DigestChallenge::parse(QByteArrayView header) {
    constexpr QByteArrayView scheme = "digest ";
    header = header.trimmed();
    if (header.size() > maximumHeaderSize || std::ranges::any_of(header, isControl)) return std::nullopt;
    if (header.size() < scheme.size() ||
        header.first(scheme.size()).compare(scheme, Qt::CaseInsensitive) != 0)
        return std::nullopt;
    const std::optional<Fields> fields = parseFields(header.sliced(scheme.size()));
    if (!fields || !fields->contains("realm") || !fields->contains("nonce")) return std::nullopt;
    if (fields->value("algorithm", "MD5").compare("MD5", Qt::CaseInsensitive) != 0) return std::nullopt;
    const bool authQuality = offersAuth(fields->value("qop"));
    if (fields->contains("qop") && !authQuality) return std::nullopt;
    DigestChallenge challenge{fields->value("realm"), fields->value("nonce"), {}, authQuality};
    if (fields->contains("opaque")) challenge.opaque = fields->value("opaque");
    return challenge;
}

DigestAnswer::DigestAnswer(DigestChallenge challenge, const QString& password, const QByteArray& user,
                           Crypto::RandomSource random)
    : challenge_(std::move(challenge)),
      user_(user),
      login_(QByteArrayView(hash({user_, challenge_.realm, Secret::fromText(password)}))),
      random_(std::move(random)) {}

QByteArray DigestAnswer::authorization(QByteArrayView method, QByteArrayView target) {
    const qsizetype query = target.indexOf('?');
    const QByteArrayView uri = query < 0 ? target : target.first(query);
    const QByteArray request = hash({method, uri});
    QList<QByteArray> fields{quoted("username", user_), quoted("realm", challenge_.realm),
                             quoted("nonce", challenge_.nonce), quoted("uri", uri)};
    if (challenge_.authQuality) {
        const QByteArray count = QByteArray::number(++count_, 16).rightJustified(8, '0');
        const QByteArray ours = random_(4).toByteArray().toHex();
        fields << quoted("response", hash({login_, challenge_.nonce, count, ours, "auth", request}))
               << "qop=auth" << "nc=" + count << quoted("cnonce", ours);
    } else {
        fields << quoted("response", hash({login_, challenge_.nonce, request}));
    }
    if (challenge_.opaque) fields << quoted("opaque", *challenge_.opaque);
    return "Digest " + fields.join(", ");
}

}  // namespace velmora
