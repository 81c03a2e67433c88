#pragma once

#include "Interface/Updater/UpdateSource.h"

#include <QNetworkAccessManager>
#include <QSslConfiguration>

#include <chrono>

namespace velmora {

/// Fetches feeds over HTTPS and nothing else, within bounds of time and size. Sends no more than the request.
class HttpsUpdateSource : public UpdateSource {
  public:
    /// `timeout`: without anything from the server, until it counts as unreachable.
    explicit HttpsUpdateSource(const QSslConfiguration& tls = QSslConfiguration::defaultConfiguration(),
                               std::chrono::milliseconds timeout = std::chrono::seconds(20));

    void fetch(const QUrl& feed, Fetched fetched) override;

  private:
    QSslConfiguration tls_;
    std::chrono::milliseconds timeout_;
    QNetworkAccessManager network_;
};

}  // namespace velmora
