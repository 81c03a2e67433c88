#include "Sender/PublishedFile.h"

#include "Diagnostics/Log.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QRandomGenerator>
#include <QTimeZone>

#include <fcntl.h>
#include <microhttpd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <tuple>

namespace velmora {

namespace {

struct MediaKind {
    const char* extension;
    const char* contentType;
};

/// The first one stands for every other extension: only movies of this family are ever published.
constexpr std::array<MediaKind, 3> mediaKinds{{
    {"mp4", "video/mp4"},
    {"m4v", "video/x-m4v"},
    {"mov", "video/quicktime"},
}};

const MediaKind& mediaKind(const QString& path) {
    const auto kind = std::find_if(mediaKinds.begin(), mediaKinds.end(), [&](const MediaKind& candidate) {
        return path.endsWith(QLatin1Char('.') + QLatin1StringView(candidate.extension), Qt::CaseInsensitive);
    });
    return kind == mediaKinds.end() ? mediaKinds.front() : *kind;
}

/// 128 random bits in hexadecimal digits.
QByteArray token() {
    std::array<quint32, 4> bits{};
    QRandomGenerator::system()->fillRange(bits.data(), bits.size());
    return QByteArray(reinterpret_cast<const char*>(bits.data()), sizeof(bits)).toHex();
}

QByteArray httpDate(time_t seconds) {
    const QDateTime time = QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
    return QLocale::c().toString(time, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'")).toLatin1();
}

QString cannotOpen(const QString& path, const QString& reason) {
    return QStringLiteral("\u201c%1\u201d cannot be opened for the television: %2").arg(path, reason);
}

/// A range of a file that is sent with some bytes changed. The system cannot send such a range by itself.
struct PatchedRange {
    int descriptor;  ///< its own
    qint64 offset;
    QList<BytePatch> patches;
};

// Callbacks of the response, on the threads of the server.

ssize_t readPatched(void* context, uint64_t position, char* buffer, size_t size) {
    const auto& range = *static_cast<const PatchedRange*>(context);
    const qint64 begin = range.offset + qint64(position);
    const ssize_t count = ::pread(range.descriptor, buffer, size, begin);
    // Shorter than it was: what is missing cannot be sent.
    if (count <= 0) return MHD_CONTENT_READER_END_WITH_ERROR;
    for (const BytePatch& patch : range.patches)
        if (patch.offset >= begin && patch.offset < begin + count) buffer[patch.offset - begin] = patch.value;
    return count;
}

void endPatched(void* context) {
    const std::unique_ptr<PatchedRange> range(static_cast<PatchedRange*>(context));
    ::close(range->descriptor);
}

MHD_Response* patchedResponse(std::unique_ptr<PatchedRange> range, qint64 length) {
    constexpr size_t blockSize = size_t{256} * 1024;
    MHD_Response* const response =
        MHD_create_response_from_callback(quint64(length), blockSize, &readPatched, range.get(), &endPatched);
    if (response)
        std::ignore = range.release();
    else
        ::close(range->descriptor);
    return response;
}

void addHeader(MHD_Response* response, const char* name, const QByteArray& value) {
    MHD_add_response_header(response, name, value.constData());
}

}  // namespace

std::expected<std::shared_ptr<const PublishedFile>, QString> PublishedFile::open(
    const QString& path, const QList<QHostAddress>& receivers, const TrackChoice& tracks) {
    // Non-blocking, so that a pipe in the movie's place is found out and not waited for.
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return std::unexpected(cannotOpen(path, qt_error_string(errno)));

    std::shared_ptr<PublishedFile> file(new PublishedFile(descriptor, receivers));
    struct stat status{};
    if (::fstat(descriptor, &status) != 0) return std::unexpected(cannotOpen(path, qt_error_string(errno)));
    if (!S_ISREG(status.st_mode))
        return std::unexpected(cannotOpen(path, QStringLiteral("it is not a file.")));
    if (status.st_size == 0) return std::unexpected(cannotOpen(path, QStringLiteral("it is empty.")));

    const MediaKind& kind = mediaKind(path);
    file->size_ = status.st_size;
    const QByteArray name = token();
    file->urlPath_ = "/m/" + name + "/movie." + kind.extension;
    file->contentType_ = kind.contentType;
    file->lastModified_ = httpDate(status.st_mtim.tv_sec);
    file->tag_ = '"' + QByteArray::number(qint64(status.st_ino), 16) + '-' +
                 QByteArray::number(qint64(status.st_size), 16) + '-' +
                 QByteArray::number(qint64(status.st_mtim.tv_sec), 16) + '.' +
                 QByteArray::number(qint64(status.st_mtim.tv_nsec), 16);
    file->choose(tracks);
    // Nobody's cache may take the one for the other.
    if (!file->patches_.isEmpty()) file->tag_ += '-' + name.first(8);
    file->tag_ += '"';
    return file;
}

PublishedFile::PublishedFile(int descriptor, QList<QHostAddress> receivers)
    : descriptor_(descriptor), receivers_(std::move(receivers)) {}

PublishedFile::~PublishedFile() {
    ::close(descriptor_);
}

void PublishedFile::choose(const TrackChoice& tracks) {
    const auto overlay = trackOverlay(descriptor_, size_, tracks);
    hasChosenTracks_ = overlay.has_value();
    if (overlay)
        patches_ = *overlay;
    else
        logger().notice(QStringLiteral("tracks: the movie is sent with its own: ") + overlay.error());
}

bool PublishedFile::isFor(const QHostAddress& client) const {
    return std::any_of(receivers_.begin(), receivers_.end(),
                       [&](const QHostAddress& receiver) { return isSameHost(receiver, client); });
}

ByteRange PublishedFile::range(QByteArrayView rangeHeader, QByteArrayView ifRangeHeader) const {
    const bool isStillThis =
        ifRangeHeader.isEmpty() || ifRangeHeader == tag_ || ifRangeHeader == lastModified_;
    return ByteRange::parse(isStillThis ? rangeHeader : QByteArrayView(), size_);
}

MHD_Response* PublishedFile::response(const ByteRange& range) const {
    MHD_Response* const response = body(range);
    if (!response) return nullptr;
    addHeader(response, MHD_HTTP_HEADER_ACCEPT_RANGES, "bytes");
    addHeader(response, MHD_HTTP_HEADER_ETAG, tag_);
    addHeader(response, MHD_HTTP_HEADER_LAST_MODIFIED, lastModified_);
    const QByteArray size = QByteArray::number(size_);
    if (range.kind == ByteRange::Kind::unsatisfiable) {
        addHeader(response, MHD_HTTP_HEADER_CONTENT_RANGE, "bytes */" + size);
        return response;
    }
    addHeader(response, MHD_HTTP_HEADER_CONTENT_TYPE, contentType_);
    if (range.kind == ByteRange::Kind::part) {
        const QByteArray span = QByteArray::number(range.offset) + '-' + QByteArray::number(range.end() - 1);
        addHeader(response, MHD_HTTP_HEADER_CONTENT_RANGE, "bytes " + span + '/' + size);
    }
    return response;
}

MHD_Response* PublishedFile::body(const ByteRange& range) const {
    if (range.kind == ByteRange::Kind::unsatisfiable)
        return MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
    // The response closes its descriptor when it is over, so each gets a duplicate; they read at offsets of
    // their own and share no position.
    const int duplicate = ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
    if (duplicate < 0) return nullptr;
    if (QList<BytePatch> patches = patchesIn(range); !patches.isEmpty()) {
        auto patched = std::make_unique<PatchedRange>(duplicate, range.offset, std::move(patches));
        return patchedResponse(std::move(patched), range.length);
    }
    MHD_Response* const response =
        MHD_create_response_from_fd_at_offset64(quint64(range.length), duplicate, quint64(range.offset));
    if (!response) ::close(duplicate);
    return response;
}

QList<BytePatch> PublishedFile::patchesIn(const ByteRange& range) const {
    QList<BytePatch> patches;
    for (const BytePatch& patch : patches_)
        if (patch.offset >= range.offset && patch.offset < range.end()) patches.append(patch);
    return patches;
}

bool isSameHost(const QHostAddress& one, const QHostAddress& other) {
    const Q_IPV6ADDR left = one.toIPv6Address();
    const Q_IPV6ADDR right = other.toIPv6Address();
    return !one.isNull() && !other.isNull() && std::memcmp(&left, &right, sizeof(left)) == 0;
}

}  // namespace velmora
