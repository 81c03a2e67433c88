#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <expected>
#include <functional>

namespace velmora {

/// Where a feed is fetched from. Main thread only.
class UpdateSource {
  public:
    /// The bytes as they came, or the reason why none did, as a whole sentence for the user.
    using Answer = std::expected<QByteArray, QString>;
    using Fetched = std::function<void(const Answer&)>;

    UpdateSource() = default;
    UpdateSource(const UpdateSource&) = delete;
    UpdateSource& operator=(const UpdateSource&) = delete;
    virtual ~UpdateSource() = default;

    /// `fetched` is called once from the event loop, unless the source is gone by then.
    virtual void fetch(const QUrl& feed, Fetched fetched) = 0;
};

}  // namespace velmora
