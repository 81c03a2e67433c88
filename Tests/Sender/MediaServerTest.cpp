// Everything here goes over real sockets on loopback, as a television would.
#include "Sender/Boxes.h"
#include "Sender/ByteRange.h"
#include "Sender/MediaServer.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <vector>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Kind = ByteRange::Kind;

struct Response {
    int status = 0;
    QByteArray head;
    QByteArray body;
    [[nodiscard]] QByteArray header(const QByteArray& name) const {
        const qsizetype at = head.toLower().indexOf("\r\n" + name.toLower() + ": ");
        if (at < 0) return {};
        const qsizetype value = at + name.size() + 4;
        return head.mid(value, head.indexOf("\r\n", value) - value);
    }
};

/// A blocking HTTP client that gives up after five seconds without a byte.
class Client {
  public:
    explicit Client(quint16 port, const char* from = "::ffff:127.0.0.1",
                    const char* to = "::ffff:127.0.0.1") {
        const timeval patience{5, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
        sockaddr_in6 source{AF_INET6, 0, 0, {}, 0};
        sockaddr_in6 target{AF_INET6, htons(port), 0, {}, 0};
        ::inet_pton(AF_INET6, from, &source.sin6_addr);
        ::inet_pton(AF_INET6, to, &target.sin6_addr);
        ::bind(socket_, reinterpret_cast<const sockaddr*>(&source), sizeof(source));
        isConnected_ = ::connect(socket_, reinterpret_cast<const sockaddr*>(&target), sizeof(target)) == 0;
    }
    ~Client() { ::close(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    [[nodiscard]] bool isConnected() const { return isConnected_; }
    bool send(const QByteArray& bytes) const {
        return ::send(socket_, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL) == bytes.size();
    }
    void sendRequest(const QByteArray& method, const QByteArray& path, const QByteArray& headers = {}) const {
        send(method + ' ' + path + " HTTP/1.1\r\nHost: x\r\n" + headers + "\r\n");
    }
    Response request(const QByteArray& method, const QByteArray& path, const QByteArray& headers = {}) {
        sendRequest(method, path, headers);
        Response response = readHead();
        if (method != "HEAD") response.body = read(response.header("Content-Length").toLongLong());
        return response;
    }
    Response readHead() {
        while (!buffer_.contains("\r\n\r\n") && fill()) {
        }
        const qsizetype end = buffer_.indexOf("\r\n\r\n");
        Response response{buffer_.mid(9, 3).toInt(), buffer_.left(end + 2), {}};
        buffer_.remove(0, end < 0 ? buffer_.size() : end + 4);
        return response;
    }
    /// Less when the connection ends before.
    QByteArray read(qint64 size) {
        while (buffer_.size() < size && fill()) {
        }
        const QByteArray bytes = buffer_.left(size);
        buffer_.remove(0, bytes.size());
        return bytes;
    }
    qint64 discard(qint64 size) {
        qint64 done = read(std::min<qint64>(size, buffer_.size())).size();
        for (ssize_t count = 1; count > 0 && done < size; done += std::max<ssize_t>(count, 0))
            count = ::recv(socket_, nullptr, size_t(std::min<qint64>(size - done, 1 << 20)), MSG_TRUNC);
        return done;
    }
    /// Closes with a reset, as a player that has enough does.
    void reset() const {
        const linger abort{1, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &abort, sizeof(abort));
    }

  private:
    bool fill() {
        char chunk[1 << 16];
        const ssize_t count = ::recv(socket_, chunk, sizeof(chunk), 0);
        if (count > 0) buffer_.append(chunk, count);
        return count > 0;
    }
    int socket_ = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool isConnected_ = false;
    QByteArray buffer_;
};

qint64 residentKiB() {
    QFile status(QStringLiteral("/proc/self/statm"));
    return status.open(QIODevice::ReadOnly) ? status.readAll().split(' ').at(1).toLongLong() * 4 : 0;
}

class MediaServerTest : public testing::Test {
  protected:
    void SetUp() override {
        for (int i = 0; i < content_.size(); ++i) content_[i] = char(i * 2654435761U >> 24);
        write(file_, content_);
        server_ = std::move(MediaServer::start(0).value());
        publish(file_);
    }
    void write(const QString& name, const QByteArray& bytes) const {
        QFile file(folder_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    void publish(const QString& name, const QHostAddress& receiver = QHostAddress(QHostAddress::LocalHost)) {
        publication_ = std::move(server_->publish(folder_.filePath(name), receiver).value());
        path_ = publication_->url(receiver).path().toLatin1();
    }
    /// Sparse, so that it costs no disk.
    void publishLarge(qint64 size) {
        write(QStringLiteral("large.mp4"), {});
        QFile::resize(folder_.filePath(QStringLiteral("large.mp4")), size);
        publish(QStringLiteral("large.mp4"));
    }

    QTemporaryDir folder_;
    const QString file_ = QStringLiteral("movie.m4v");
    QByteArray content_{300'000, '\0'};
    std::unique_ptr<MediaServer> server_;
    std::unique_ptr<MediaServer::Publication> publication_;
    QByteArray path_;
};

TEST(ByteRangeTest, ReadsWhatReceiversAndFoolsSend) {
    struct Case {
        const char* header;
        Kind kind;
        qint64 offset;
        qint64 length;
    };
    const Case cases[] = {
        {"", Kind::whole, 0, 1000},
        {"bytes=0-1", Kind::part, 0, 2},
        {"bytes=0-", Kind::part, 0, 1000},
        {"Bytes= 999- ", Kind::part, 999, 1},
        {"bytes=10-99999999999999999999999", Kind::part, 10, 990},
        {"bytes=10-9223372036854775807", Kind::part, 10, 990},
        {"bytes=-1", Kind::part, 999, 1},
        {"bytes=-99999999999999999999999", Kind::part, 0, 1000},
        {"bytes=-0", Kind::unsatisfiable, 0, 0},
        {"bytes=1000-", Kind::unsatisfiable, 0, 0},
        {"bytes=99999999999999999999999-", Kind::unsatisfiable, 0, 0},
        {"bytes=5-4", Kind::whole, 0, 1000},
        {"bytes=0-1,5-6", Kind::whole, 0, 1000},
        {"bytes=-", Kind::whole, 0, 1000},
        {"bytes=", Kind::whole, 0, 1000},
        {"bytes=+1-2", Kind::whole, 0, 1000},
        {"bytes=--5", Kind::whole, 0, 1000},
        {"bytes=1-0x9", Kind::whole, 0, 1000},
        {"seconds=1-2", Kind::whole, 0, 1000},
    };
    for (const Case& c : cases) {
        const ByteRange range = ByteRange::parse(c.header, 1000);
        EXPECT_TRUE(range.kind == c.kind && range.offset == c.offset && range.length == c.length) << c.header;
    }
}

TEST_F(MediaServerTest, AnswersExactlyWhatIsAsked) {
    Client client(server_->port());
    const Response whole = client.request("GET", path_);
    EXPECT_EQ(whole.status, 200);
    EXPECT_EQ(whole.body, content_);
    EXPECT_EQ(whole.header("Accept-Ranges"), "bytes");
    EXPECT_EQ(whole.header("Content-Type"), "video/x-m4v");
    EXPECT_TRUE(whole.header("Last-Modified").endsWith(" GMT"));

    const Response part = client.request("GET", path_, "Range: bytes=5-9\r\n");
    EXPECT_EQ(part.status, 206);
    EXPECT_EQ(part.body, content_.mid(5, 5));
    EXPECT_EQ(part.header("Content-Range"), "bytes 5-9/300000");
    EXPECT_EQ(part.header("ETag"), whole.header("ETag"));

    const Response beyond = client.request("GET", path_, "Range: bytes=300000-\r\n");
    EXPECT_EQ(beyond.status, 416);
    EXPECT_EQ(beyond.header("Content-Range"), "bytes */300000");

    const Response head = client.request("HEAD", path_, "Range: bytes=0-1\r\n");
    EXPECT_EQ(head.status, 200);
    EXPECT_EQ(head.header("Content-Length"), "300000");

    const QByteArray range = "Range: bytes=0-1\r\nIf-Range: ";
    EXPECT_EQ(client.request("GET", path_, range + whole.header("ETag") + "\r\n").status, 206);
    EXPECT_EQ(client.request("GET", path_, range + "\"another\"\r\n").status, 200);
}

TEST_F(MediaServerTest, ServesChosenTracksAsIfTheFileHadThem) {
    namespace Boxes = test::Boxes;
    // The index behind a megabyte, so that answers are sent in several pieces.
    const QByteArray movie = Boxes::box("mdat", content_ + content_ + content_ + content_) +
                             Boxes::box("moov", Boxes::tracks()) + Boxes::box("free", content_);
    write(file_, movie);
    publish(file_);
    Client client(server_->port());
    const QByteArray plainTag = client.request("HEAD", path_).header("ETag");
    const QByteArray plainPath = path_;

    const TrackChoice choice{.audio = TrackChoice::Track{2, 2}, .subtitle = TrackChoice::Track{0, 2}};
    const auto chosen =
        server_->publish(folder_.filePath(file_), QHostAddress(QHostAddress::LocalHost), choice).value();
    EXPECT_TRUE(chosen->hasChosenTracks());
    const QByteArray path = chosen->url(QHostAddress(QHostAddress::LocalHost)).path().toLatin1();
    EXPECT_NE(path, plainPath);
    QByteArray expected = movie;
    qsizetype at = 0;
    for (const char flags : {7, 6, 7, 6, 6}) {
        at = expected.indexOf("tkhd", at + 1);
        expected[at + 7] = flags;
    }
    const Response whole = client.request("GET", path);
    EXPECT_EQ(whole.body, expected);
    EXPECT_NE(whole.header("ETag"), plainTag);
    EXPECT_EQ(client.request("HEAD", path).header("Content-Length"), QByteArray::number(movie.size()));
    // Around a changed byte, ending before it, beginning at it, and behind them all.
    const qsizetype byte =
        expected.indexOf("tkhd", expected.indexOf("tkhd", expected.indexOf("tkhd") + 1) + 1) + 7;
    for (const auto& [first, last] : {std::pair{byte - 900'000, byte},
                                      {byte - 9, byte - 1},
                                      {byte, byte},
                                      {byte, movie.size() - 1},
                                      {movie.size() - 99, movie.size() - 1}}) {
        const QByteArray range = QByteArray::number(first) + '-' + QByteArray::number(last);
        const Response part = client.request("GET", path, "Range: bytes=" + range + "\r\n");
        EXPECT_EQ(part.status, 206);
        EXPECT_EQ(part.body, expected.sliced(first, last - first + 1)) << range.constData();
        EXPECT_EQ(part.header("Content-Range"), "bytes " + range + '/' + QByteArray::number(movie.size()));
    }
    EXPECT_EQ(client.request("GET", plainPath).body, movie) << "the other one is what it was";
    EXPECT_GE(chosen->activity().bytesSent, movie.size());

    // What is cut short meanwhile ends the connection rather than sending something else.
    QFile::resize(folder_.filePath(file_), byte + 100);
    client.sendRequest("GET", path);
    (void)client.readHead();
    EXPECT_LT(client.read(movie.size()).size(), movie.size());

    write(QStringLiteral("other.mp4"), content_);
    const auto other = server_->publish(folder_.filePath(QStringLiteral("other.mp4")),
                                        QHostAddress(QHostAddress::LocalHost), choice);
    ASSERT_TRUE(other.has_value());
    EXPECT_FALSE((*other)->hasChosenTracks());
    const QByteArray otherPath = (*other)->url(QHostAddress(QHostAddress::LocalHost)).path().toLatin1();
    EXPECT_EQ(Client(server_->port()).request("GET", otherPath).body, content_);
}

TEST_F(MediaServerTest, ShowsNothingElse) {
    const QByteArray folder = path_.left(path_.lastIndexOf('/') + 1);
    QByteArray otherCase = path_;
    otherCase[3] = char(otherCase[3] ^ 1);
    for (const QByteArray& path :
         {QByteArray("/"), QByteArray("/m/"), folder, QByteArray("/favicon.ico"), otherCase, path_ + '/',
          folder + "../../../../etc/passwd", QByteArray("//etc/passwd")})
        EXPECT_EQ(Client(server_->port()).request("GET", path).status, 404) << path.constData();
    EXPECT_EQ(Client(server_->port()).request("POST", path_, "Content-Length: 0\r\n").status, 405);
    EXPECT_EQ(Client(server_->port()).request("DELETE", path_).status, 405);
    EXPECT_EQ(publication_->activity().requests, 0);
}

TEST_F(MediaServerTest, AnswersTheReceiverOnly) {
    EXPECT_EQ(
        Client(server_->port(), "::ffff:127.0.0.2").request("GET", path_, "Range: bytes=0-1\r\n").status,
        404);
    EXPECT_EQ(publication_->activity().refused, 1);
    EXPECT_EQ(publication_->activity().requests, 0);

    publish(file_, QHostAddress(QStringLiteral("::ffff:127.0.0.1")));
    EXPECT_EQ(Client(server_->port()).request("HEAD", path_).status, 200);
    publish(file_, QHostAddress(QHostAddress::LocalHostIPv6));
    EXPECT_EQ(Client(server_->port()).request("HEAD", path_).status, 404);
    EXPECT_EQ(Client(server_->port(), "::1", "::1").request("HEAD", path_).status, 200);

    EXPECT_EQ(publication_->url(QHostAddress(QStringLiteral("::ffff:192.0.2.7"))).host(),
              QStringLiteral("192.0.2.7"));
    EXPECT_EQ(publication_->url(QHostAddress(QStringLiteral("fd00::7"))).authority(),
              QStringLiteral("[fd00::7]:%1").arg(server_->port()));
}

TEST_F(MediaServerTest, CountsWhatTheReceiverTook) {
    Client client(server_->port());
    client.request("HEAD", path_);
    EXPECT_EQ(publication_->activity().mediaRequests, 0);
    client.request("GET", path_, "Range: bytes=100-199\r\n");
    client.request("GET", path_, "Range: bytes=0-1\r\n");
    const MediaServer::Activity some = publication_->activity();
    EXPECT_EQ(some.requests, 3);
    EXPECT_EQ(some.mediaRequests, 2);
    EXPECT_EQ(some.bytesSent, 102);
    EXPECT_EQ(some.furthestByte, 200);
    EXPECT_FALSE(some.readPastIndex);
    client.request("GET", path_, "Range: bytes=-1\r\n");
    EXPECT_TRUE(publication_->activity().readPastIndex);

    // A promise of a gibibyte of which a few kilobytes were taken is not a gibibyte.
    publishLarge(1LL << 30);
    {
        Client greedy(server_->port());
        greedy.sendRequest("GET", path_, "Range: bytes=0-\r\n");
        greedy.read(1000);
        greedy.reset();
    }
    const MediaServer::Activity little = publication_->activity();
    EXPECT_GE(little.bytesSent, 1000);
    EXPECT_LT(little.bytesSent, 64LL << 20);
}

TEST_F(MediaServerTest, KeepsConnectionsForManyQuickRanges) {
    Client client(server_->port());
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 1000; ++i) {
        const QByteArray range = QByteArray::number(i * 200) + '-' + QByteArray::number(i * 200 + 65535);
        ASSERT_EQ(client.request("GET", path_, "Range: bytes=" + range + "\r\n").body,
                  content_.mid(i * 200, 65536));
    }
    // A delayed acknowledgement for each would take 40 seconds.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST_F(MediaServerTest, ServesManyAtOnceAndSurvivesResets) {
    publishLarge(64LL << 20);
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 60; ++i) {
        clients.push_back(std::make_unique<Client>(server_->port()));
        clients.back()->sendRequest("GET", path_);
    }
    for (const auto& client : clients)
        ASSERT_EQ(client->readHead().status, 200);  // none has been read to the end
    for (size_t i = 0; i < clients.size(); ++i) {
        if (i % 6) clients[i]->reset();
        if (i % 6 == 0) {
            EXPECT_EQ(clients[i]->discard(64LL << 20), 64LL << 20);
        }
        clients[i].reset();
    }
    EXPECT_EQ(Client(server_->port()).request("HEAD", path_).status, 200);
}

TEST_F(MediaServerTest, HoldsTheFileThatWasPublished) {
    Client client(server_->port());
    QFile::rename(folder_.filePath(file_), folder_.filePath(QStringLiteral("elsewhere")));
    write(file_, "another movie");
    EXPECT_EQ(client.request("GET", path_).body, content_);

    // Even a file that shrinks only ends the connection.
    publishLarge(64LL << 20);
    client.sendRequest("GET", path_);
    client.readHead();
    QFile::resize(folder_.filePath(QStringLiteral("large.mp4")), 1);
    EXPECT_LT(client.discard(64LL << 20), 64LL << 20);
}

TEST_F(MediaServerTest, EndsTransfersWithThePublication) {
    publishLarge(1LL << 30);
    Client running(server_->port());
    running.sendRequest("GET", path_);
    EXPECT_EQ(running.readHead().status, 200);
    publication_.reset();
    EXPECT_LT(running.discard(1LL << 30), 1LL << 30);
    EXPECT_EQ(Client(server_->port()).request("GET", path_).status, 404);

    publish(file_);
    Client idle(server_->port());
    idle.request("HEAD", path_);
    server_.reset();
    EXPECT_EQ(publication_->activity().requests, 1);
}

TEST_F(MediaServerTest, StaysSmall) {
    constexpr qint64 size = 128LL << 20;
    publishLarge(size);
    Client client(server_->port());
    client.request("GET", path_, "Range: bytes=0-99\r\n");
    const qint64 before = residentKiB();
    for (int i = 0; i < 16; ++i) {  // two gibibytes
        client.sendRequest("GET", path_);
        client.readHead();
        ASSERT_EQ(client.discard(size), size);
    }
    EXPECT_LT(residentKiB() - before, 8 * 1024);
    EXPECT_TRUE(publication_->activity().readPastIndex);
}

bool eventually(const auto& holds) {
    for (int attempt = 0; attempt < 500; ++attempt) {
        if (holds()) return true;
        QThread::msleep(10);
    }
    return false;
}

TEST_F(MediaServerTest, SurvivesFloods) {
    // Strangers that hold connections, and more of them than there are places, leave room for the receiver.
    std::vector<std::unique_ptr<Client>> strangers;
    for (int i = 0; i < 300; ++i)
        strangers.push_back(std::make_unique<Client>(server_->port(), "::ffff:127.0.0.3"));
    for (int i = 0; i < 3000; ++i) ASSERT_TRUE(Client(server_->port()).isConnected());
    // The places of those that left are free once the server has seen them leave.
    const auto isServed = [this] { return Client(server_->port()).request("HEAD", path_).status == 200; };
    EXPECT_TRUE(eventually(isServed));

    const qint64 before = residentKiB();
    Client flooding(server_->port());
    const QByteArray line = "X-Flood: " + QByteArray(4000, 'x') + "\r\n";
    flooding.send("GET " + path_ + " HTTP/1.1\r\n");
    for (int i = 0; i < 5000 && flooding.send(line); ++i) {
    }
    EXPECT_EQ(Client(server_->port()).request("HEAD", path_).status, 200);
    EXPECT_LT(residentKiB() - before, 8 * 1024);
}

TEST_F(MediaServerTest, SaysWhyAFileCannotBePublished) {
    write(QStringLiteral("empty.mp4"), {});
    ::mkfifo(QFile::encodeName(folder_.filePath(QStringLiteral("pipe.mp4"))).constData(), 0600);
    const QHostAddress receiver(QHostAddress::LocalHost);
    for (const char* name : {"missing.mp4", ".", "empty.mp4", "pipe.mp4"}) {
        const auto result = server_->publish(folder_.filePath(QString::fromLatin1(name)), receiver);
        ASSERT_FALSE(result) << name;
        EXPECT_TRUE(result.error().contains(QString::fromLatin1(name))) << qPrintable(result.error());
    }
}

TEST_F(MediaServerTest, TakesTheNextPortWhereOneIsTaken) {
    const auto second = MediaServer::start();
    ASSERT_TRUE(second);
    EXPECT_NE((*second)->port(), server_->port());
    EXPECT_FALSE(MediaServer::start(server_->port()));
}

}  // namespace
}  // namespace velmora
