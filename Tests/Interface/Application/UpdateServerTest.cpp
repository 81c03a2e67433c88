// The feed over real HTTPS, from a server of our own on this computer.
#include "Interface/Updater/HttpsUpdateSource.h"
#include "Interface/Updater/UpdateFeed.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace velmora;

namespace {

/// A certificate for this computer that signs itself.
struct Identity {
    QSslCertificate certificate;
    QSslKey key;

    [[nodiscard]] static std::optional<Identity> make(const QString& name) {
        const QTemporaryDir folder;
        const QString key = folder.filePath(u"key"_s);
        const QString certificate = folder.filePath(u"certificate"_s);
        QProcess openssl;
        openssl.start(u"openssl"_s, {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                                     u"ec_paramgen_curve:P-256"_s, u"-nodes"_s, u"-keyout"_s, key, u"-out"_s,
                                     certificate, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN="_s + name,
                                     u"-addext"_s, u"subjectAltName=DNS:"_s + name});
        openssl.waitForFinished();
        QFile keyFile(key);
        const auto certificates = QSslCertificate::fromPath(certificate);
        if (certificates.isEmpty() || !keyFile.open(QIODevice::ReadOnly)) return std::nullopt;
        return Identity{certificates.first(), QSslKey(keyFile.readAll(), QSsl::Ec)};
    }
};

/// Answers each request on a path with what is set for it; on others never.
class Server : public QObject {
  public:
    QMap<QByteArray, QByteArray> answers;
    QByteArray requests;

    explicit Server(const Identity& identity) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setLocalCertificate(identity.certificate);
        tls.setPrivateKey(identity.key);
        server_.setSslConfiguration(tls);
        server_.listen(QHostAddress::LocalHost);
        connect(&server_, &QTcpServer::pendingConnectionAvailable, this, [this] {
            QTcpSocket* socket = server_.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                const QByteArray request = socket->readAll();
                requests += request;
                const auto answer = answers.constFind(request.split(' ').value(1));
                if (answer == answers.cend()) return;
                socket->write(*answer);
                socket->disconnectFromHost();
            });
        });
    }
    [[nodiscard]] QUrl url(const QString& path) const {
        return QUrl(u"https://localhost:%1%2"_s.arg(server_.serverPort()).arg(path));
    }

  private:
    QSslServer server_;
};

QByteArray ok(const QByteArray& body) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}
QByteArray moved(const QUrl& to) {
    return "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " + to.toEncoded() + "\r\n\r\n";
}

TEST(UpdateServer, IsAskedOverProvenConnectionsAloneAndWithinBounds) {
    const auto identity = Identity::make(u"localhost"_s);
    const auto stranger = Identity::make(u"example.org"_s);
    if (!identity || !stranger) GTEST_SKIP() << "There is no openssl to make certificates with.";
    Server server(*identity);
    Server impostor(*stranger);
    QTcpServer plain;
    ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
    const QUrl plainUrl(u"http://localhost:%1/feed"_s.arg(plain.serverPort()));
    server.answers = {
        {"/feed", ok("news")},
        {"/moved", moved(server.url(u"/feed"_s))},
        {"/round", moved(server.url(u"/round"_s))},
        {"/down", moved(plainUrl)},
        {"/gone", "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnews"},
        {"/huge", ok(QByteArray(2 * UpdateFeed::maxSize, 'x'))},
        // It goes on for ever without saying how long it is.
        {"/endless", "HTTP/1.1 200 OK\r\n\r\n" + QByteArray(2 * UpdateFeed::maxSize, 'x')},
        {"/short", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nnews"},
    };
    impostor.answers = {{"/feed", ok("lies")}};

    // Both certificates are trusted, each for its own name.
    QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
    trusting.setCaCertificates({identity->certificate, stranger->certificate});
    HttpsUpdateSource source(trusting);
    HttpsUpdateSource impatient(trusting, 500ms);
    HttpsUpdateSource ordinary;
    const struct {
        HttpsUpdateSource& source;
        QUrl feed;
        std::optional<QByteArray> expected;
    } cases[] = {
        {source, server.url(u"/feed"_s), "news"},   {source, server.url(u"/moved"_s), "news"},
        {source, server.url(u"/round"_s), {}},      {source, server.url(u"/down"_s), {}},
        {source, server.url(u"/gone"_s), {}},       {source, server.url(u"/huge"_s), {}},
        {source, server.url(u"/endless"_s), {}},    {source, server.url(u"/short"_s), {}},
        {impatient, server.url(u"/silence"_s), {}}, {source, impostor.url(u"/feed"_s), {}},
        {ordinary, server.url(u"/feed"_s), {}},     {source, plainUrl, {}},
    };
    for (const auto& [asked, feed, expected] : cases) {
        std::optional<UpdateSource::Answer> answer;
        asked.fetch(feed, [&answer](const UpdateSource::Answer& came) { answer = came; });
        EXPECT_FALSE(answer) << "never from inside the call";
        ASSERT_TRUE(QTest::qWaitFor([&answer] { return answer.has_value(); }, 10'000))
            << feed.toString().toStdString();
        EXPECT_EQ(answer->has_value(), expected.has_value()) << feed.toString().toStdString();
        EXPECT_TRUE(!*answer || **answer == expected) << "another answer";
        EXPECT_TRUE(*answer || answer->error().endsWith(u'.')) << "a sentence for the user";
    }
    EXPECT_FALSE(plain.hasPendingConnections()) << "nothing goes over a plain connection";
    EXPECT_TRUE(impostor.requests.isEmpty());
}

}  // namespace
