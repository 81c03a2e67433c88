#include "Television/Session/RemoteFrames.h"

#include "Sender/Plist.h"

#include <QVariant>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr qsizetype headSize = 32;
constexpr qsizetype longest = 256 * 1024;
const QByteArray zeros(16, '\0');

auto wrong(const QString& reason) {
    return std::unexpected(u"a frame "_s + reason);
}

/// What a number of 33 bits looks like whose highest bit is set: every sender counts there.
bool isUsualSequence(quint64 sequence) {
    return sequence >> 32U == 1;
}

std::optional<QByteArray> payloadOf(const QByteArray& body) {
    const QVariantMap plist = Plist::decode(body).value_or(QVariant()).toMap();
    const QVariant data = plist.value(u"params"_s).toMap().value(u"data"_s);
    if (!body.startsWith("bplist00") || data.typeId() != QMetaType::QByteArray) return std::nullopt;
    return data.toByteArray();
}

}  // namespace

QByteArray RemoteFrame::encoded() const {
    const QVariantMap params{{u"data"_s, payload}};
    const QByteArray body = isReply ? QByteArray() : Plist::encodeBinary(QVariantMap{{u"params"_s, params}});
    QByteArray head(headSize, '\0');
    qToBigEndian(quint32(headSize + body.size()), head.data());
    head.replace(4, 4, isReply ? "rply" : "sync");
    if (!isReply) head.replace(16, 4, "cmnd");
    qToBigEndian(sequence, head.data() + 20);
    return head + body;
}

std::expected<std::optional<RemoteFrame>, QString> RemoteFrame::take(QByteArray& bytes) {
    if (bytes.size() < headSize) return std::nullopt;
    const qsizetype size = qFromBigEndian<quint32>(bytes.constData());
    if (size < headSize || size > longest) return wrong(u"of an impossible size"_s);
    if (bytes.size() < size) return std::nullopt;
    RemoteFrame frame;
    frame.isReply = bytes.mid(4, 4) == "rply";
    frame.sequence = qFromBigEndian<quint64>(bytes.constData() + 20);
    if (!frame.isReply && bytes.mid(4, 4) != "sync") return wrong(u"that is neither sync nor rply"_s);
    if (bytes.mid(8, 8) != zeros.first(8) || bytes.mid(28, 4) != zeros.first(4))
        return wrong(u"with something where nothing belongs"_s);
    if (bytes.mid(16, 4) != (frame.isReply ? zeros.first(4) : QByteArray("comm")))
        return wrong(u"of another command"_s);
    if (frame.isReply && size != headSize) return wrong(u"that replies with a body"_s);
    if (!frame.isReply) {
        if (!isUsualSequence(frame.sequence)) return wrong(u"with a sequence number out of the usual"_s);
        const auto payload = payloadOf(bytes.mid(headSize, size - headSize));
        if (!payload) return wrong(u"without its envelope"_s);
        frame.payload = *payload;
    }
    bytes.remove(0, size);
    return frame;
}

}  // namespace velmora::test
