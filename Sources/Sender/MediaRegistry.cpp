#include "Sender/MediaRegistry.h"

#include "Diagnostics/Log.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace velmora {

namespace {

constexpr int foreignConnectionLimit = 32;

/// The index of the longest movies (9 MiB for two and a half hours), and what a receiver's socket takes in
/// beyond what the receiver reads.
constexpr qint64 indexSpan = 16LL * 1024 * 1024;

/// Bytes that the client's system has confirmed on this connection so far. The files go out through sendfile,
/// which leaves no other trace of its progress.
quint64 acknowledged(int descriptor) {
    tcp_info info{};
    socklen_t length = sizeof(info);
    if (::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &info, &length) != 0) return 0;
    constexpr size_t needed = offsetof(tcp_info, tcpi_bytes_acked) + sizeof(info.tcpi_bytes_acked);
    return length >= needed ? info.tcpi_bytes_acked : 0;
}

/// How much of its answer the client has taken so far.
qint64 confirmed(const MediaRegistry::Connection& connection) {
    const quint64 bytes = acknowledged(connection.descriptor) - connection.acknowledgedBefore;
    return std::min(qint64(bytes), connection.range.length);
}

void count(MediaServer::Activity& activity, const PublishedFile& file, const ByteRange& range, qint64 sent) {
    activity.bytesSent += sent;
    if (sent == 0) return;
    activity.furthestByte = std::max(activity.furthestByte, range.offset + sent);
    activity.readPastIndex = activity.furthestByte >= std::min(indexSpan, file.size());
}

void tell(const QString& what, const QHostAddress& client) {
    logger().notice(QStringLiteral("media server: %1 %2").arg(what, client.toString()));
}

}  // namespace

void MediaRegistry::add(const File& file) {
    const std::scoped_lock lock(mutex_);
    entries_.insert(file->urlPath(), Entry{file, {}});
}

void MediaRegistry::remove(const File& file) {
    const std::scoped_lock lock(mutex_);
    for (const auto& [key, connection] : connections_) {
        if (connection->file != file) continue;
        ::shutdown(connection->descriptor, SHUT_RDWR);
        connection->file.reset();
    }
    entries_.remove(file->urlPath());
}

MediaRegistry::Activity MediaRegistry::activity(const File& file) const {
    const std::scoped_lock lock(mutex_);
    const auto entry = entries_.constFind(file->urlPath());
    if (entry == entries_.constEnd()) return {};
    Activity activity = entry->activity;
    for (const auto& [key, connection] : connections_) {
        if (connection->file == file) count(activity, *file, connection->range, confirmed(*connection));
    }
    return activity;
}

bool MediaRegistry::accepts(const QHostAddress& client) const {
    const std::scoped_lock lock(mutex_);
    return foreignConnections_ < foreignConnectionLimit || isReceiver(client);
}

MediaRegistry::Connection* MediaRegistry::connected(int descriptor, const QHostAddress& client) {
    const std::scoped_lock lock(mutex_);
    auto connection = std::make_unique<Connection>();
    connection->descriptor = descriptor;
    connection->client = client;
    connection->isForeign = !isReceiver(client);
    foreignConnections_ += connection->isForeign ? 1 : 0;
    Connection* const handle = connection.get();
    connections_.emplace(handle, std::move(connection));
    return handle;
}

void MediaRegistry::disconnected(Connection* connection) {
    const std::scoped_lock lock(mutex_);
    settle(*connection, connection->isHandedOver ? connection->range.length : confirmed(*connection));
    foreignConnections_ -= connection->isForeign ? 1 : 0;
    connections_.erase(connection);
}

MediaRegistry::Answer MediaRegistry::request(Connection& connection, const QByteArray& urlPath, bool isGet,
                                             QByteArrayView rangeHeader, QByteArrayView ifRangeHeader) {
    const std::scoped_lock lock(mutex_);
    settle(connection, confirmed(connection));
    const auto entry = entries_.find(urlPath);
    if (entry == entries_.end()) return {};
    const File& file = entry->file;
    Activity& activity = entry->activity;
    if (!file->isFor(connection.client)) {
        if (activity.refused++ == 0) tell(QStringLiteral("refused"), connection.client);
        return {};
    }

    // Ranges are defined for GET alone.
    const ByteRange range = isGet ? file->range(rangeHeader, ifRangeHeader) : file->range({}, {});
    if (range.kind == ByteRange::Kind::unsatisfiable) return {file, range};
    activity.requests += 1;
    activity.lastRequest = std::chrono::steady_clock::now();
    if (!activity.firstRequest) {
        activity.firstRequest = activity.lastRequest;
        tell(QStringLiteral("first request from"), connection.client);
    }
    if (isGet) {
        activity.mediaRequests += 1;
        connection.file = file;
        connection.range = range;
        connection.acknowledgedBefore = acknowledged(connection.descriptor);
        connection.isHandedOver = false;
    }
    return {file, range};
}

void MediaRegistry::handedOver(Connection& connection) {
    const std::scoped_lock lock(mutex_);
    connection.isHandedOver = true;
}

bool MediaRegistry::isReceiver(const QHostAddress& client) const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& entry) { return entry.file->isFor(client); });
}

/// Closes the account of the connection's last GET.
void MediaRegistry::settle(Connection& connection, qint64 sent) {
    if (!connection.file) return;
    const auto entry = entries_.find(connection.file->urlPath());
    if (entry != entries_.end()) count(entry->activity, *connection.file, connection.range, sent);
    connection.file.reset();
}

}  // namespace velmora
