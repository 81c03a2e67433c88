#include "Interface/Updater/HttpsUpdateSource.h"

#include "Diagnostics/Log.h"
#include "Interface/Updater/UpdateFeed.h"

#include <QNetworkReply>
#include <QNetworkRequest>

#include <chrono>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds timeout = std::chrono::seconds(20);

UpdateSource::Answer answer(QNetworkReply& reply) {
    if (reply.error() == QNetworkReply::NoError) return reply.readAll();
    logger().error(u"update check: "_s + reply.errorString());
    return std::unexpected(u"The update server could not be reached. Check the network and try again."_s);
}

}  // namespace

void HttpsUpdateSource::fetch(const QUrl& feed, Fetched fetched) {
    QNetworkRequest request(feed);
    request.setTransferTimeout(static_cast<int>(timeout.count()));
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Velmora"_s);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    if (feed.scheme() != "https"_L1) request.setUrl({});  // fails like any address that cannot be reached
    QNetworkReply* reply = network_.get(request);
    QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received) {
        if (received > UpdateFeed::maxSize) reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, fetched = std::move(fetched)] {
        fetched(answer(*reply));
        reply->deleteLater();
    });
}

}  // namespace velmora
