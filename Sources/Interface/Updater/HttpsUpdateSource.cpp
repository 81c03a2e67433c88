#include "Interface/Updater/HttpsUpdateSource.h"

#include "Diagnostics/Log.h"
#include "Interface/Updater/UpdateFeed.h"

#include <QCoreApplication>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Updater)
};

constexpr int mostRedirects = 5;

bool isTooLong(const QNetworkReply& reply) {
    return reply.bytesAvailable() > UpdateFeed::maxSize;
}

UpdateSource::Answer answer(QNetworkReply& reply) {
    if (reply.error() == QNetworkReply::NoError && !isTooLong(reply)) return reply.readAll();
    logger().error(u"update check: "_s + (isTooLong(reply) ? u"too long an answer"_s : reply.errorString()));
    return std::unexpected(
        Texts::tr("The update server could not be reached. Check the network and try again."));
}

}  // namespace

HttpsUpdateSource::HttpsUpdateSource(const QSslConfiguration& tls, std::chrono::milliseconds timeout)
    : tls_(tls), timeout_(timeout) {}

void HttpsUpdateSource::fetch(const QUrl& feed, Fetched fetched) {
    QNetworkRequest request(feed);
    request.setTransferTimeout(static_cast<int>(timeout_.count()));
    request.setSslConfiguration(tls_);
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Velmora"_s);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirects);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    if (feed.scheme() != "https"_L1) request.setUrl({});  // fails like any address that cannot be reached
    QNetworkReply* reply = network_.get(request);
    // One byte more is too many already; what comes after it is left on the server.
    reply->setReadBufferSize(UpdateFeed::maxSize + 1);
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply] {
        if (isTooLong(*reply)) reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, fetched = std::move(fetched)] {
        fetched(answer(*reply));
        reply->deleteLater();
    });
}

}  // namespace velmora
