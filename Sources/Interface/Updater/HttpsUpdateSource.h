#pragma once

#include "Interface/Updater/UpdateSource.h"

#include <QNetworkAccessManager>

namespace velmora {

/// Fetches feeds over HTTPS and nothing else, within bounds of time and size. Sends no more than the request.
class HttpsUpdateSource : public UpdateSource {
  public:
    void fetch(const QUrl& feed, Fetched fetched) override;

  private:
    QNetworkAccessManager network_;
};

}  // namespace velmora
