#include "Sender/Plist.h"

#include "Sender/BinaryPlist.h"

#include <QXmlStreamReader>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace velmora::Plist {

namespace {

constexpr qsizetype largestDocument = 1024 * 1024;

// ---- Reading XML

constexpr int deepestNesting = 64;

std::optional<QVariant> readValue(QXmlStreamReader& xml, int depth);

std::optional<QVariant> readArray(QXmlStreamReader& xml, int depth) {
    QVariantList list;
    while (xml.readNextStartElement()) {
        auto item = readValue(xml, depth);
        if (!item) return std::nullopt;
        list.append(*std::move(item));
    }
    return list;
}

std::optional<QVariant> readDictionary(QXmlStreamReader& xml, int depth) {
    QVariantMap map;
    while (xml.readNextStartElement()) {
        if (xml.name() != "key"_L1) return std::nullopt;
        const QString key = xml.readElementText();
        if (!xml.readNextStartElement()) return std::nullopt;
        auto value = readValue(xml, depth);
        if (!value) return std::nullopt;
        map.insert(key, *std::move(value));
    }
    return map;
}

QVariant readScalar(const QString& kind, const QString& text) {
    if (kind == "string"_L1) return text;
    if (kind == "integer"_L1) return text.trimmed().toLongLong(nullptr, 0);
    if (kind == "real"_L1) return text.trimmed().toDouble();
    if (kind == "true"_L1) return true;
    if (kind == "false"_L1) return false;
    if (kind == "data"_L1) return QByteArray::fromBase64(text.toLatin1());
    return {};
}

// The reader stands on a start element and is left on its end.
std::optional<QVariant> readValue(QXmlStreamReader& xml, int depth) {
    if (depth > deepestNesting) return std::nullopt;
    const QString kind = xml.name().toString();
    if (kind == "dict"_L1) return readDictionary(xml, depth + 1);
    if (kind == "array"_L1) return readArray(xml, depth + 1);
    return readScalar(kind, xml.readElementText());
}

std::optional<QVariant> decodeXml(const QByteArray& document) {
    QXmlStreamReader xml(document);
    if (!xml.readNextStartElement() || xml.name() != "plist"_L1) return std::nullopt;
    if (!xml.readNextStartElement()) return std::nullopt;
    const auto value = readValue(xml, 0);
    return xml.hasError() ? std::nullopt : value;
}

// ---- Writing

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

Node toNode(const QVariant& value);

Node toArray(const QVariantList& list) {
    Node array(plist_new_array());
    for (const QVariant& item : list) plist_array_append_item(array.get(), toNode(item).release());
    return array;
}

Node toDictionary(const QVariantMap& map) {
    Node dictionary(plist_new_dict());
    for (const auto& [key, item] : map.asKeyValueRange())
        plist_dict_set_item(dictionary.get(), key.toUtf8().constData(), toNode(item).release());
    return dictionary;
}

Node toNode(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
            return Node(plist_new_bool(value.toBool() ? 1 : 0));
        case QMetaType::Double:
            return Node(plist_new_real(value.toDouble()));
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            return Node(plist_new_uint(value.toULongLong()));
        case QMetaType::QVariantList:
            return toArray(value.toList());
        case QMetaType::QVariantMap:
            return toDictionary(value.toMap());
        case QMetaType::QByteArray: {
            const QByteArray data = value.toByteArray();
            return Node(plist_new_data(data.constData(), static_cast<uint64_t>(data.size())));
        }
        default:
            return Node(plist_new_string(value.toString().toUtf8().constData()));
    }
}

using Writer = void (*)(plist_t, char**, uint32_t*);

QByteArray written(const QVariant& value, Writer writer) {
    const Node node = toNode(value);
    char* bytes = nullptr;
    uint32_t size = 0;
    writer(node.get(), &bytes, &size);
    QByteArray result(bytes, static_cast<qsizetype>(size));
    std::free(bytes);
    return result;
}

}  // namespace

std::expected<QVariant, QString> decode(const QByteArray& bytes) {
    if (bytes.size() > largestDocument) return std::unexpected(u"the property list is too large"_s);
    auto value = bytes.startsWith("bplist00") ? BinaryPlist(bytes).decode() : decodeXml(bytes.trimmed());
    if (!value) return std::unexpected(u"the property list is damaged, or nested too deeply"_s);
    return *std::move(value);
}

QByteArray encodeBinary(const QVariant& value) {
    return written(value, plist_to_bin);
}

QByteArray encodeXml(const QVariant& value) {
    return written(value, plist_to_xml);
}

}  // namespace velmora::Plist
