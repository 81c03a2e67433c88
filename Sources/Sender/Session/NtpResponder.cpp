#include "Sender/Session/NtpResponder.h"

#include <QNetworkDatagram>
#include <QtEndian>

namespace velmora {

namespace {

constexpr qsizetype messageBytes = 32;
constexpr qsizetype typeAt = 1;
constexpr qsizetype originAt = 8;
constexpr qsizetype receivedAt = 16;
constexpr qsizetype sentAt = 24;
constexpr uchar questionType = 0xd2;
constexpr uchar answerType = 0xd3;

// Seconds since 1900 and their fraction, 32 bits each.
quint64 stamp(NtpResponder::Time time) {
    using namespace std::chrono;
    constexpr quint64 secondsFrom1900To1970 = 2208988800;
    const auto since = time.time_since_epoch();
    const auto whole = floor<seconds>(since);
    const auto rest = static_cast<quint64>(duration_cast<nanoseconds>(since - whole).count());
    const quint64 fraction = (rest << 32) / std::nano::den;
    return ((static_cast<quint64>(whole.count()) + secondsFrom1900To1970) << 32) | fraction;
}

bool isSame(const QHostAddress& one, const QHostAddress& other) {
    return one.isEqual(other, QHostAddress::TolerantConversion);
}

}  // namespace

std::unique_ptr<NtpResponder> NtpResponder::listen(const QHostAddress& local, const QHostAddress& receiver) {
    std::unique_ptr<NtpResponder> responder(new NtpResponder(receiver));
    return responder->socket_.bind(local, 0) ? std::move(responder) : nullptr;
}

NtpResponder::NtpResponder(const QHostAddress& receiver) : receiver_(receiver) {
    connect(&socket_, &QUdpSocket::readyRead, this, &NtpResponder::respond);
}

void NtpResponder::respond() {
    const Time received = std::chrono::system_clock::now();
    while (socket_.hasPendingDatagrams()) {
        const QNetworkDatagram question = socket_.receiveDatagram(messageBytes + 1);
        if (!isSame(question.senderAddress(), receiver_)) continue;
        if (const auto reply = answer(question.data(), received, std::chrono::system_clock::now()))
            socket_.writeDatagram(*reply, question.senderAddress(),
                                  static_cast<quint16>(question.senderPort()));
    }
}

std::optional<QByteArray> NtpResponder::answer(QByteArrayView question, Time received, Time sent) {
    if (question.size() != messageBytes || uchar(question[typeAt]) != questionType) return std::nullopt;
    QByteArray reply = question.first(originAt).toByteArray();
    reply[typeAt] = static_cast<char>(answerType);
    std::fill_n(reply.begin() + 4, 4, '\0');
    reply += question.sliced(sentAt, 8).toByteArray();
    reply.resize(messageBytes);
    qToBigEndian(stamp(received), reply.data() + receivedAt);
    qToBigEndian(stamp(sent), reply.data() + sentAt);
    return reply;
}

}  // namespace velmora
