#pragma once

#include "Sender/ByteRange.h"
#include "Sender/MediaServer.h"
#include "Sender/PublishedFile.h"

#include <QHash>
#include <QHostAddress>

#include <memory>
#include <mutex>
#include <unordered_map>

namespace velmora {

/// What the media server serves, and what is being fetched. Usable from every thread; its lock is held for
/// microseconds.
class MediaRegistry {
  public:
    using Activity = MediaServer::Activity;
    using File = std::shared_ptr<const PublishedFile>;

    /// A client's connection, from its start to its end.
    struct Connection {
        int descriptor = -1;
        QHostAddress client;
        bool isForeign = false;  ///< nothing was published for this client when it came

        // The GET that it is answering or has answered last; none when `file` is null.
        File file;
        ByteRange range;
        quint64 acknowledgedBefore = 0;
        bool isHandedOver = false;  ///< the system has taken the whole answer
    };

    struct Answer {
        File file;
        ByteRange range;
    };

    void add(const File& file);
    /// Also ends the transfers that run.
    void remove(const File& file);
    /// Empty for a file that was removed.
    [[nodiscard]] Activity activity(const File& file) const;

    /// Whether a connection from `client` is to be taken at all. Strangers get a few, so that they are told
    /// that there is nothing here, and cannot take the places of a television.
    [[nodiscard]] bool accepts(const QHostAddress& client) const;
    [[nodiscard]] Connection* connected(int descriptor, const QHostAddress& client);
    void disconnected(Connection* connection);

    /// The answer to a GET or HEAD, counted; a null file where there is nothing for this client.
    [[nodiscard]] Answer request(Connection& connection, const QByteArray& urlPath, bool isGet,
                                 QByteArrayView rangeHeader, QByteArrayView ifRangeHeader);
    void handedOver(Connection& connection);

  private:
    struct Entry {
        File file;
        Activity activity;
    };
    [[nodiscard]] bool isReceiver(const QHostAddress& client) const;
    void settle(Connection& connection, qint64 sent);

    mutable std::mutex mutex_;
    QHash<QByteArray, Entry> entries_;  // by path of the URL
    std::unordered_map<const Connection*, std::unique_ptr<Connection>> connections_;
    int foreignConnections_ = 0;
};

}  // namespace velmora
