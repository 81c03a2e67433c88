#include "Sender/MediaServer.h"

#include "Sender/ListeningSocket.h"
#include "Sender/MediaRegistry.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>

namespace velmora {

namespace {

using Registry = MediaRegistry;
using File = MediaRegistry::File;

constexpr unsigned connectionLimit = 256;
constexpr unsigned connectionLimitPerAddress = 128;

/// For a request's line and headers. Receivers send less than a kibibyte.
constexpr size_t connectionMemory = size_t{16} * 1024;

/// For each connection's thread, which goes no deeper than into the log.
constexpr size_t threadStack = size_t{256} * 1024;

/// A connection from an address that nothing is published for. A receiver's connection has no time limit,
/// because a paused television holds it for as long as the pause lasts.
constexpr unsigned foreignIdleSeconds = 10;

/// After this many seconds of silence, the system asks whether the other side is still there.
constexpr int keepAliveIdleSeconds = 60;
constexpr int keepAliveIntervalSeconds = 15;
constexpr int keepAliveProbes = 4;

void setOption(int descriptor, int level, int name, int value) {
    ::setsockopt(descriptor, level, name, &value, sizeof(value));
}

/// Finds receivers that were switched off with their connections open.
void keepAlive(int descriptor) {
    setOption(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, keepAliveIdleSeconds);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, keepAliveIntervalSeconds);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPCNT, keepAliveProbes);
}

QByteArrayView header(MHD_Connection* connection, const char* name) {
    return {MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name)};
}

Registry::Connection* account(MHD_Connection* connection) {
    const MHD_ConnectionInfo* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
    return info ? static_cast<Registry::Connection*>(info->socket_context) : nullptr;
}

/// Queues `response`, which may be null, and lets go of it.
MHD_Result answer(MHD_Connection* connection, unsigned status, MHD_Response* response) {
    if (!response) return MHD_NO;  // closes the connection
    const MHD_Result result = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return result;
}

MHD_Response* emptyResponse() {
    return MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
}

MHD_Result answerMethodNotAllowed(MHD_Connection* connection) {
    MHD_Response* const response = emptyResponse();
    if (response) MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    return answer(connection, MHD_HTTP_METHOD_NOT_ALLOWED, response);
}

unsigned statusOf(const ByteRange& range) {
    switch (range.kind) {
        case ByteRange::Kind::whole:
            return MHD_HTTP_OK;
        case ByteRange::Kind::part:
            return MHD_HTTP_PARTIAL_CONTENT;
        case ByteRange::Kind::unsatisfiable:
            return MHD_HTTP_RANGE_NOT_SATISFIABLE;
    }
    return MHD_HTTP_INTERNAL_SERVER_ERROR;
}

MHD_Result answerMovie(Registry& registry, MHD_Connection* connection, const char* url, bool isGet) {
    Registry::Connection* const asking = account(connection);
    if (!asking) return MHD_NO;
    const Registry::Answer found =
        registry.request(*asking, url, isGet, header(connection, MHD_HTTP_HEADER_RANGE),
                         header(connection, MHD_HTTP_HEADER_IF_RANGE));
    if (!found.file) return answer(connection, MHD_HTTP_NOT_FOUND, emptyResponse());
    return answer(connection, statusOf(found.range), found.file->response(found.range));
}

// The callbacks. `context` is the registry; they run on the server's threads.

MHD_Result onAccept(void* context, const sockaddr* client, socklen_t /*length*/) {
    return static_cast<Registry*>(context)->accepts(QHostAddress(client)) ? MHD_YES : MHD_NO;
}

void onConnection(void* context, MHD_Connection* connection, void** connectionContext,
                  MHD_ConnectionNotificationCode code) {
    auto& registry = *static_cast<Registry*>(context);
    if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
        if (*connectionContext) registry.disconnected(static_cast<Registry::Connection*>(*connectionContext));
        *connectionContext = nullptr;
        return;
    }
    const MHD_ConnectionInfo* const client =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    const QHostAddress address(client->client_addr);
    const int descriptor = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    Registry::Connection* const opened = registry.connected(descriptor, address);
    *connectionContext = opened;
    keepAlive(descriptor);
    if (opened->isForeign)
        MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, foreignIdleSeconds);
}

MHD_Result onRequest(void* context, MHD_Connection* connection, const char* url, const char* method,
                     const char* /*version*/, const char* /*uploaded*/, size_t* uploadedSize,
                     void** requestContext) {
    // The first call comes before a body, if there is one; an answer now would end the connection.
    static char seen;
    if (!*requestContext) {
        *requestContext = &seen;
        return MHD_YES;
    }
    if (*uploadedSize > 0) {
        *uploadedSize = 0;
        return MHD_YES;
    }
    const QByteArrayView verb(method);
    const bool isGet = verb == MHD_HTTP_METHOD_GET;
    if (!isGet && verb != MHD_HTTP_METHOD_HEAD) return answerMethodNotAllowed(connection);
    return answerMovie(*static_cast<Registry*>(context), connection, url, isGet);
}

void onCompleted(void* context, MHD_Connection* connection, void** /*requestContext*/,
                 MHD_RequestTerminationCode code) {
    Registry::Connection* const served = account(connection);
    if (served && code == MHD_REQUEST_TERMINATED_COMPLETED_OK)
        static_cast<Registry*>(context)->handedOver(*served);
}

/// One thread for each connection: it sends 2 MiB at a time where the event-driven modes send 128 KiB, and
/// one that waits for a slow disk keeps no other television waiting.
constexpr unsigned threading = MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL;

MHD_Daemon* startDaemon(int listening, Registry* registry) {
    const std::array<MHD_OptionItem, 8> options{{
        {MHD_OPTION_LISTEN_SOCKET, listening, nullptr},
        {MHD_OPTION_CONNECTION_LIMIT, connectionLimit, nullptr},
        {MHD_OPTION_PER_IP_CONNECTION_LIMIT, connectionLimitPerAddress, nullptr},
        {MHD_OPTION_CONNECTION_MEMORY_LIMIT, connectionMemory, nullptr},
        {MHD_OPTION_THREAD_STACK_SIZE, threadStack, nullptr},
        {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<intptr_t>(&onConnection), registry},
        {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<intptr_t>(&onCompleted), registry},
        {MHD_OPTION_END, 0, nullptr},
    }};
    return MHD_start_daemon(threading, 0, &onAccept, registry, &onRequest, registry, MHD_OPTION_ARRAY,
                            options.data(), MHD_OPTION_END);
}

class PublishedMovie : public MediaServer::Publication {
  public:
    PublishedMovie(std::shared_ptr<Registry> registry, File file, quint16 port)
        : registry_(std::move(registry)), file_(std::move(file)), port_(port) {}
    ~PublishedMovie() override { registry_->remove(file_); }
    PublishedMovie(const PublishedMovie&) = delete;
    PublishedMovie& operator=(const PublishedMovie&) = delete;

    [[nodiscard]] QUrl url(const QHostAddress& local) const override {
        bool isIPv4 = false;
        const quint32 ipv4 = local.toIPv4Address(&isIPv4);  // also of an IPv4 address written as IPv6
        QHostAddress host = isIPv4 ? QHostAddress(ipv4) : local;
        host.setScopeId({});
        QUrl url;
        url.setScheme(QStringLiteral("http"));
        url.setHost(host.toString());
        url.setPort(port_);
        url.setPath(QString::fromLatin1(file_->urlPath()));
        return url;
    }
    [[nodiscard]] MediaServer::Activity activity() const override { return registry_->activity(file_); }
    [[nodiscard]] bool hasChosenTracks() const override { return file_->hasChosenTracks(); }

  private:
    std::shared_ptr<Registry> registry_;
    File file_;
    quint16 port_;
};

}  // namespace

class MediaServer::Private {
  public:
    std::shared_ptr<Registry> registry = std::make_shared<Registry>();
    quint16 port = 0;
    MHD_Daemon* daemon = nullptr;
};

std::expected<std::unique_ptr<MediaServer>, QString> MediaServer::start(quint16 port) {
    auto d = std::make_unique<Private>();
    auto listening = port ? ListeningSocket::open(port, port) : ListeningSocket::open(firstPort, lastPort);
    if (!listening && !port) listening = ListeningSocket::open(0, 0);
    if (!listening) return std::unexpected(listening.error());
    d->port = listening->port();
    d->daemon = startDaemon(listening->descriptor(), d->registry.get());
    if (!d->daemon) return std::unexpected(QStringLiteral("The media server cannot start."));
    listening->release();
    return std::unique_ptr<MediaServer>(new MediaServer(std::move(d)));
}

MediaServer::MediaServer(std::unique_ptr<Private> d) : d_(std::move(d)) {}

MediaServer::~MediaServer() {
    MHD_stop_daemon(d_->daemon);
}

quint16 MediaServer::port() const {
    return d_->port;
}

std::expected<std::unique_ptr<MediaServer::Publication>, QString> MediaServer::publish(
    const QString& path, const QHostAddress& receiver, const TrackChoice& tracks) {
    auto file = PublishedFile::open(path, {receiver}, tracks);
    if (!file) return std::unexpected(file.error());
    d_->registry->add(*file);
    return std::make_unique<PublishedMovie>(d_->registry, *file, d_->port);
}

}  // namespace velmora
