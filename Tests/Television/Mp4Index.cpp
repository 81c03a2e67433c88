#include "Television/Mp4Index.h"

#include <QtEndian>

namespace velmora::test {

namespace {

constexpr qint64 headerSize = 16;  // with the long form of the size
constexpr qint64 movieHeaderSize = 44;
constexpr qint64 worthAJump = 64LL * 1024;

template <class Number>
qint64 number(const QByteArray& bytes, qsizetype offset) {
    return qint64(qFromBigEndian<Number>(bytes.constData() + offset));
}

}  // namespace

Mp4Index::Need Mp4Index::feed(const QByteArray& bytes) {
    buffer_ += bytes;
    while (!duration_) {
        const qint64 end = bufferStart_ + buffer_.size();
        if (cursor_ + headerSize > fileSize_) return Need::broken;
        if (cursor_ > end + worthAJump) return Need::jump;
        if (cursor_ + movieHeaderSize > end) return end < fileSize_ ? more() : Need::broken;
        if (!enter(at(movieHeaderSize))) return Need::broken;
    }
    // A receiver needs the whole index, not its first box alone.
    return indexEnd_ <= bufferStart_ + buffer_.size() ? Need::done : Need::more;
}

Mp4Index::Need Mp4Index::more() {
    const qint64 passed = qMin(cursor_ - bufferStart_, buffer_.size());
    buffer_.remove(0, passed);
    bufferStart_ += passed;
    return Need::more;
}

void Mp4Index::jumped() {
    buffer_.clear();
    bufferStart_ = cursor_;
}

QByteArray Mp4Index::at(qint64 length) const {
    return buffer_.mid(cursor_ - bufferStart_, length);
}

/// Goes past the box that begins here, or into it if it is the index.
bool Mp4Index::enter(const QByteArray& box) {
    const QByteArray type = box.mid(4, 4);
    const bool isLong = number<quint32>(box, 0) == 1;
    const qint64 size = isLong ? number<quint64>(box, 8) : number<quint32>(box, 0);
    const qint64 header = isLong ? 16 : 8;
    if (size < header || size > fileSize_ - cursor_) return false;
    if (cursor_ == 0 && type != "ftyp") return false;
    if (type == "mvhd" && indexEnd_ > 0) return readDuration(box.mid(header));
    if (type == "moov") indexEnd_ = cursor_ + size;
    cursor_ += type == "moov" ? header : size;
    return true;
}

bool Mp4Index::readDuration(const QByteArray& box) {
    const bool isLong = box.at(0) == 1;
    const qint64 scale = number<quint32>(box, isLong ? 20 : 12);
    const qint64 units = isLong ? number<quint64>(box, 24) : number<quint32>(box, 16);
    if (scale <= 0) return false;
    duration_ = double(units) / double(scale);
    cursor_ = indexEnd_;
    return true;
}

}  // namespace velmora::test
