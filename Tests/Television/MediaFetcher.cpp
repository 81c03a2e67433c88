#include "Television/MediaFetcher.h"

#include <QHostAddress>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr qint64 readAhead = 4LL * 1024 * 1024;

template <class Number>
qint64 number(const QByteArray& bytes, qsizetype offset) {
    return qint64(qFromBigEndian<Number>(bytes.constData() + offset));
}

}  // namespace

MediaFetcher::MediaFetcher(QUrl url, QObject* parent) : QObject(parent), url_(std::move(url)) {}

MediaFetcher::~MediaFetcher() {
    if (socket_) socket_->disconnect(this);
}

void MediaFetcher::start() {
    const QString path = url_.path(QUrl::FullyEncoded);
    if (url_.scheme() != "http"_L1 || QHostAddress(url_.host()).isNull())
        return fail(u"the movie's address is not plain http to a number: "_s + url_.toString());
    if (path.contains('%'_L1) || url_.hasQuery() ||
        !(path.endsWith(".mp4"_L1) || path.endsWith(".m4v"_L1) || path.endsWith(".mov"_L1)))
        return fail(u"the movie's address does not end in a plain name: "_s + path);
    connectAfresh();
    request(Step::head, "HEAD", {});
}

void MediaFetcher::readFrom(double fraction) {
    offset_ = qBound(qint64(0), qint64(fraction * double(size_)), size_ - 1);
    connectAfresh();
    request(Step::media, "GET", "bytes=" + QByteArray::number(offset_) + '-');
}

/// Hangs up on what still comes in.
void MediaFetcher::connectAfresh() {
    if (socket_) {
        socket_->disconnect(this);
        socket_->abort();
        socket_.release()->deleteLater();
    }
    socket_ = std::make_unique<QTcpSocket>();
    connect(socket_.get(), &QTcpSocket::readyRead, this, &MediaFetcher::receive);
    connect(socket_.get(), &QTcpSocket::connected, this,
            [this] { socket_->write(std::exchange(unsent_, {})); });
    connect(socket_.get(), &QTcpSocket::errorOccurred, this,
            [this] { fail(u"no movie: "_s + socket_->errorString()); });
    socket_->connectToHost(QHostAddress(url_.host()), quint16(url_.port(80)));
}

void MediaFetcher::request(Step step, const QByteArray& method, const QByteArray& range) {
    step_ = step;
    inHead_ = true;
    head_.clear();
    taken_ = 0;
    unsent_ = method + ' ' + url_.path(QUrl::FullyEncoded).toLatin1() +
              " HTTP/1.1\r\nHost: " + url_.authority().toLatin1() + "\r\nAccept: */*\r\n" +
              (range.isEmpty() ? QByteArray() : "Range: " + range + "\r\n") + "\r\n";
    if (socket_->state() == QAbstractSocket::ConnectedState) socket_->write(std::exchange(unsent_, {}));
}

void MediaFetcher::receive() {
    while (socket_->bytesAvailable() > 0) {
        if (!inHead_) {
            take(socket_->readAll());
            continue;
        }
        const std::optional<Head> head = takeHead();
        if (!head) return;
        inHead_ = false;
        const QString wrong = complaint(*head);
        if (!wrong.isEmpty()) return fail(wrong);
        accept(*head);
    }
}

std::optional<MediaFetcher::Head> MediaFetcher::takeHead() {
    while (socket_->canReadLine()) {
        const QByteArray line = socket_->readLine();
        head_ += line;
        if (line != "\r\n") continue;
        QList<QByteArray> lines = head_.trimmed().split('\n');
        Head head{lines.takeFirst().mid(9, 3).toInt(), {}};
        for (const QByteArray& header : lines)
            head.headers.append(header.left(header.indexOf(':')),
                                header.mid(header.indexOf(':') + 1).trimmed());
        return head;
    }
    return std::nullopt;
}

/// What is wrong with the answer, if anything.
QString MediaFetcher::complaint(const Head& head) const {
    const int expected = step_ == Step::head ? 200 : 206;
    if (head.status != expected)
        return u"the movie's server answered %1, not %2"_s.arg(head.status).arg(expected);
    if (head.headers.value("Accept-Ranges") != "bytes") return u"the movie's server has no ranges"_s;
    if (!head.headers.value("Content-Type").startsWith("video/")) return u"this is no video by its type"_s;
    if (head.headers.value("Content-Length").toLongLong() <= 0) return u"the movie has no length"_s;
    if (step_ == Step::head) return {};
    const qint64 last = step_ == Step::firstBytes ? 1 : size_ - 1;
    const QByteArray range = QByteArray::number(offset_) + '-' + QByteArray::number(last);
    const QByteArray wanted = "bytes " + range + '/' + QByteArray::number(size_);
    const QByteArray length = QByteArray::number(last - offset_ + 1);
    if (head.headers.value("Content-Range") != wanted || head.headers.value("Content-Length") != length)
        return u"another range than %1 was sent"_s.arg(QLatin1StringView(wanted));
    return {};
}

void MediaFetcher::accept(const Head& head) {
    remaining_ = head.headers.value("Content-Length").toLongLong();
    if (step_ != Step::head) return;
    size_ = remaining_;
    offset_ = 0;
    request(Step::firstBytes, "GET", "bytes=0-1");
}

void MediaFetcher::take(const QByteArray& bytes) {
    taken_ += bytes.size();
    remaining_ -= bytes.size();
    if (remaining_ < 0) return fail(u"more came than was announced"_s);
    if (step_ == Step::index) return readIndex(bytes);
    if (remaining_ == 0 || taken_ >= readAhead) finishStep();
}

/// Box by box, up to the one that tells of the movie; it may lie behind the media.
void MediaFetcher::readIndex(const QByteArray& bytes) {
    boxes_ += bytes;
    constexpr qsizetype headSize = 16;  // with the long form of the size
    while (boxes_.size() >= headSize) {
        const QByteArray type = boxes_.mid(4, 4);
        const bool isLong = number<quint32>(boxes_, 0) == 1;
        const qint64 size = isLong ? number<quint64>(boxes_, 8) : number<quint32>(boxes_, 0);
        const bool isFirst = offset_ == 0;
        if (size < 8 || size > size_ - offset_ || isFirst != (type == "ftyp"))
            return fail(u"this is no movie with an index"_s);
        const bool isWhole = boxes_.size() >= size;
        if (type == "moov" && !isWhole) return;
        if (type == "moov") return takeIndex(boxes_.first(size));
        offset_ += size;
        boxes_.remove(0, qMin<qint64>(size, boxes_.size()));
        if (isWhole) continue;
        connectAfresh();
        return request(Step::index, "GET", "bytes=" + QByteArray::number(offset_) + '-');
    }
    if (remaining_ == 0) fail(u"this is no movie with an index"_s);
}

void MediaFetcher::takeIndex(const QByteArray& index) {
    const qsizetype at = index.indexOf("mvhd") + 4;
    const bool isLong = at > 4 && index.mid(at, 1) == "\1";
    const qsizetype scaleAt = at + (isLong ? 20 : 12);
    if (at < 4 || scaleAt + 12 > index.size() || number<quint32>(index, scaleAt) == 0)
        return fail(u"this is no movie with an index"_s);
    const qint64 units = isLong ? number<quint64>(index, scaleAt + 4) : number<quint32>(index, scaleAt + 4);
    Q_EMIT opened(double(units) / double(number<quint32>(index, scaleAt)));
}

void MediaFetcher::finishStep() {
    if (step_ == Step::firstBytes) {
        boxes_.clear();
        request(Step::index, "GET", "bytes=0-");
        return;
    }
    socket_->disconnect(this);
    socket_->abort();
    Q_EMIT buffered(double(offset_ + taken_) / double(size_));
}

void MediaFetcher::fail(const QString& reason) {
    if (socket_) {
        socket_->disconnect(this);
        socket_->abort();
    }
    Q_EMIT failed(reason);
}

}  // namespace velmora::test
