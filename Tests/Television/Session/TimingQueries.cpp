#include "Television/Session/TimingQueries.h"

#include <QDateTime>
#include <QNetworkDatagram>
#include <QtEndian>

#include <cmath>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr Clock::Duration soon = 300ms;
constexpr Clock::Duration usual = 2s;
constexpr int eager = 3;  // questions in the first second
constexpr int bearable = 3;
constexpr qsizetype size = 32;
constexpr double from1900 = 2208988800.0;
constexpr double tolerance = 60;  // seconds

double now() {
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000 + from1900;
}

QByteArray stamp(double time) {
    QByteArray bytes(8, '\0');
    qToBigEndian(quint32(time), bytes.data());
    qToBigEndian(quint32((time - std::floor(time)) * 4294967296.0), bytes.data() + 4);
    return bytes;
}

double timeAt(const QByteArray& bytes, qsizetype at) {
    return qFromBigEndian<quint32>(bytes.constData() + at) +
           qFromBigEndian<quint32>(bytes.constData() + at + 4) / 4294967296.0;
}

}  // namespace

TimingQueries::TimingQueries(Context& context, const QHostAddress& sender, quint16 port, QObject* parent)
    : QObject(parent), context_(context), sender_(sender), port_(port) {
    if (!socket_.bind(context.options.address)) context.say(socket_.errorString());
    connect(&socket_, &QUdpSocket::readyRead, this, &TimingQueries::receive);
    ask();
}

void TimingQueries::ask() {
    if (open_++ == bearable) Q_EMIT missed();
    question_ = QByteArray("\x80\xD2\x00\x07", 4) + QByteArray(20, '\0') + stamp(now());
    socket_.writeDatagram(question_, sender_, port_);
    asking_ = context_.clock.after(asked_++ < eager ? soon : usual, [this] { ask(); });
}

void TimingQueries::receive() {
    while (socket_.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = socket_.receiveDatagram();
        const QString wrong = complaint(datagram.data());
        if (!wrong.isEmpty()) {
            context_.complain(u"timing: "_s + wrong);
            continue;
        }
        open_ = 0;
        if (!std::exchange(known_, true)) Q_EMIT answered();
    }
}

QString TimingQueries::complaint(const QByteArray& answer) const {
    if (answer.size() != size) return u"an answer that is not 32 bytes"_s;
    if (answer.first(8) != QByteArray("\x80\xD3\x00\x07\0\0\0\0", 8)) return u"no answer to a question"_s;
    if (answer.mid(8, 8) != question_.mid(24, 8)) return u"an answer to another question"_s;
    if (std::abs(timeAt(answer, 16) - now()) > tolerance) return u"a time of another age"_s;
    if (timeAt(answer, 24) < timeAt(answer, 16)) return u"sent before it was asked for"_s;
    return {};
}

}  // namespace velmora::test
