#include "Interface/Application/Freedesktop/HandoverSocket.h"

#include "Diagnostics/Log.h"

#include <QLocalSocket>
#include <QLockFile>
#include <QStandardPaths>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr int connectMilliseconds = 2'000;
/// A process that has just started may be making its first window.
constexpr int answerMilliseconds = 10'000;
constexpr qint64 maxLine = 1 << 20;  // bytes; some thousand long paths
constexpr QByteArrayView taken = "taken\n";

std::expected<void, QString> handOver(QLocalSocket& socket, const LaunchRequest& request) {
    socket.write(request.toLine());
    QByteArray answer;
    while (!answer.endsWith('\n') && socket.waitForReadyRead(answerMilliseconds)) answer += socket.readAll();
    if (answer == taken) return {};
    return std::unexpected(u"Velmora is running but does not answer. Close it and try again."_s);
}

}  // namespace

HandoverSocket::HandoverSocket(QString path, QObject* parent) : QObject(parent), path_(std::move(path)) {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &HandoverSocket::accept);
}

QString HandoverSocket::defaultPath() {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
           "/com.quillet.velmora.socket"_L1;
}

std::expected<HandoverSocket::Outcome, QString> HandoverSocket::handOverOrListen(
    const LaunchRequest& request) {
    // Of two that start at once, the second asks only when the first listens.
    QLockFile lock(path_ + ".lock"_L1);
    if (!lock.tryLock(answerMilliseconds)) logger().error(u"starting beside another start: "_s + path_);

    QLocalSocket socket;
    socket.connectToServer(path_);
    if (socket.waitForConnected(connectMilliseconds)) {
        lock.unlock();
        if (const auto done = ::velmora::handOver(socket, request); !done)
            return std::unexpected(done.error());
        return Outcome::handedOver;
    }
    QLocalServer::removeServer(path_);  // left behind by one that crashed
    if (!server_.listen(path_))
        logger().error(u"later starts cannot reach this one: "_s + server_.errorString());
    return Outcome::listening;
}

void HandoverSocket::accept() {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { read(*socket); });
        socket->setReadBufferSize(maxLine);
        read(*socket);
    }
}

void HandoverSocket::read(QLocalSocket& socket) {
    if (!socket.canReadLine()) {
        if (socket.bytesAvailable() >= maxLine) socket.abort();
        return;
    }
    const auto request = LaunchRequest::fromLine(socket.readLine());
    if (!request) return socket.abort();
    socket.write(taken.toByteArray());
    socket.disconnectFromServer();  // once it is written
    // Making a window takes its time; the other start is not kept waiting for it.
    QMetaObject::invokeMethod(
        this, [this, request = *request] { Q_EMIT requested(request); }, Qt::QueuedConnection);
}

}  // namespace velmora
