#pragma once

#include "Sender/ByteRange.h"
#include "Sender/TrackOverlay.h"

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QString>

#include <expected>
#include <memory>

struct MHD_Response;

namespace velmora {

/// A movie that is open for serving: one descriptor, opened once, so that renaming, replacing or deleting
/// the file changes nothing for a television that is in the middle of it. Chosen tracks are laid over it as
/// it is sent; the file itself stays as it is. Immutable, hence usable from every thread.
class PublishedFile {
  public:
    /// Fails, with the reason in plain words, for anything but a readable file that is not empty. A file
    /// whose tracks cannot be chosen is served with its own.
    [[nodiscard]] static std::expected<std::shared_ptr<const PublishedFile>, QString> open(
        const QString& path, const QList<QHostAddress>& receivers, const TrackChoice& tracks = {});
    ~PublishedFile();
    PublishedFile(const PublishedFile&) = delete;
    PublishedFile& operator=(const PublishedFile&) = delete;

    /// The path part of the URL: unguessable, plain ASCII, ends in the movie's kind.
    [[nodiscard]] const QByteArray& urlPath() const { return urlPath_; }
    [[nodiscard]] qint64 size() const { return size_; }
    /// False for a file that is served with its own tracks for want of a way to choose others.
    [[nodiscard]] bool hasChosenTracks() const { return hasChosenTracks_; }
    [[nodiscard]] bool isFor(const QHostAddress& client) const;

    /// What a request with these headers (empty when absent) is to get.
    [[nodiscard]] ByteRange range(QByteArrayView rangeHeader, QByteArrayView ifRangeHeader) const;

    /// The answer, with all its headers; null when the system is out of descriptors or memory.
    [[nodiscard]] MHD_Response* response(const ByteRange& range) const;

  private:
    PublishedFile(int descriptor, QList<QHostAddress> receivers);
    void choose(const TrackChoice& tracks);
    [[nodiscard]] MHD_Response* body(const ByteRange& range) const;
    [[nodiscard]] QList<BytePatch> patchesIn(const ByteRange& range) const;

    int descriptor_;
    QList<QHostAddress> receivers_;
    qint64 size_ = 0;
    QList<BytePatch> patches_;
    bool hasChosenTracks_ = true;
    QByteArray urlPath_;
    QByteArray contentType_;
    QByteArray tag_;
    QByteArray lastModified_;
};

/// Whether two addresses are the same host's, however they are written: an IPv4 client on a socket that also
/// takes IPv6 shows up as ::ffff:a.b.c.d, and a link-local one with its interface.
[[nodiscard]] bool isSameHost(const QHostAddress& one, const QHostAddress& other);

}  // namespace velmora
