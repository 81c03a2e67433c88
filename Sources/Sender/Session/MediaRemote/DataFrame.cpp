#include "Sender/Session/MediaRemote/DataFrame.h"

#include <QtEndian>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// The head, big-endian: total size, kind of twelve bytes, command of four, sequence, four bytes of nothing.
constexpr qsizetype kindAt = 4;
constexpr qsizetype commandAt = 16;
constexpr qsizetype sequenceAt = 20;

const QByteArray messageKind("sync\0\0\0\0\0\0\0\0", commandAt - kindAt);
const QByteArray replyKind("rply\0\0\0\0\0\0\0\0", commandAt - kindAt);

}  // namespace

QByteArray DataFrame::encoded() const {
    QByteArray head(headBytes, '\0');
    qToBigEndian(static_cast<quint32>(headBytes + body.size()), head.data());
    head.replace(kindAt, messageKind.size(), kind == Kind::message ? messageKind : replyKind);
    if (kind == Kind::message) head.replace(commandAt, 4, "comm");
    qToBigEndian(sequence, head.data() + sequenceAt);
    return head + body;
}

std::expected<std::optional<DataFrame>, QString> DataFrameReader::next() {
    if (buffer_.size() < DataFrame::headBytes) return std::nullopt;
    const qsizetype size = qFromBigEndian<quint32>(buffer_.constData());
    if (size < DataFrame::headBytes || size > DataFrame::mostBytes)
        return std::unexpected(u"a frame of %1 bytes"_s.arg(size));
    const QByteArrayView kind = QByteArrayView(buffer_).sliced(kindAt, messageKind.size());
    const bool isMessage = kind == messageKind;
    if (!isMessage && kind != replyKind) return std::unexpected(u"a frame of an unknown kind"_s);
    if (buffer_.size() < size) return std::nullopt;
    DataFrame frame{.kind = isMessage ? DataFrame::Kind::message : DataFrame::Kind::reply,
                    .sequence = qFromBigEndian<quint64>(buffer_.constData() + sequenceAt),
                    .body = buffer_.sliced(DataFrame::headBytes, size - DataFrame::headBytes)};
    buffer_.remove(0, size);
    return frame;
}

}  // namespace velmora
