#include "Sender/TrackOverlay.h"

#include <QByteArray>
#include <QSet>
#include <QtEndian>

#include <unistd.h>

#include <algorithm>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// Movies in thousands of fragments have their index in front of them; one movie has a few hundred boxes.
constexpr int mostBoxes = 20'000;
constexpr qint64 mostReferences = 256;  // from one track to others

constexpr char enabled = 0x01;  // in the lowest byte of a track header's flags

template <class Value>
using Read = std::expected<Value, QString>;

struct Box {
    QByteArray type;
    qint64 begin = 0;  // of its content
    qint64 end = 0;
};

enum class Kind { audio, subtitle, other };

struct Track {
    Kind kind = Kind::other;
    quint32 identifier = 0;
    BytePatch flags;            // as they are
    QList<quint32> chapters{};  // tracks that hold the names of its chapters
};

quint32 numberAt(const QByteArray& bytes, qsizetype at) {
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

/// The names of chapters are text like any other, until another track refers to them.
Kind kindOf(const QByteArray& handler) {
    if (handler == "soun") return Kind::audio;
    const bool isText =
        handler == "sbtl" || handler == "text" || handler == "subt" || handler == "subp" || handler == "clcp";
    return isText ? Kind::subtitle : Kind::other;
}

/// Walks the boxes of a file.
class IndexReader {
  public:
    IndexReader(int descriptor, qint64 size) : descriptor_(descriptor), size_(size) {}

    Read<QList<Track>> tracks() {
        const auto index = indexBox();
        if (!index) return std::unexpected(index.error());
        const auto boxes = children(*index);
        if (!boxes) return std::unexpected(boxes.error());
        QList<Track> tracks;
        for (const Box& box : *boxes) {
            if (box.type != "trak") continue;
            const auto track = readTrack(box);
            if (!track) return std::unexpected(track.error());
            tracks.append(*track);
        }
        return withoutChapters(tracks);
    }

  private:
    Read<Box> indexBox() {
        for (qint64 at = 0; at < size_;) {
            const auto box = boxAt(at, size_);
            if (!box || box->type == "moov") return box;
            at = box->end;
        }
        return std::unexpected(u"it has no index"_s);
    }

    Read<QList<Box>> children(const Box& parent) {
        constexpr qint64 smallest = 8;  // less than that is padding
        QList<Box> boxes;
        for (qint64 at = parent.begin; at + smallest <= parent.end;) {
            const auto box = boxAt(at, parent.end);
            if (!box) return std::unexpected(box.error());
            boxes.append(*box);
            at = box->end;
        }
        return boxes;
    }

    Read<Box> boxAt(qint64 at, qint64 limit) {
        if (++boxes_ > mostBoxes) return std::unexpected(u"its index has no end"_s);
        const auto head = bytes(at, 8, limit);
        if (!head) return std::unexpected(head.error());
        qint64 headSize = 8;
        quint64 size = numberAt(*head, 0);
        if (size == 1) {
            const auto large = bytes(at + headSize, 8, limit);
            if (!large) return std::unexpected(large.error());
            size = qFromBigEndian<quint64>(large->constData());
            headSize = 16;
        } else if (size == 0) {
            size = quint64(limit - at);  // the last one
        }
        if (size < quint64(headSize) || size > quint64(limit - at))
            return std::unexpected(u"a part of its index is larger than the whole"_s);
        return Box{head->sliced(4, 4), at + headSize, at + qint64(size)};
    }

    Read<QByteArray> bytes(qint64 at, qint64 count, qint64 limit) const {
        if (at + count > limit) return std::unexpected(u"its index breaks off"_s);
        QByteArray read(count, Qt::Uninitialized);
        if (::pread(descriptor_, read.data(), size_t(count), at) != count)
            return std::unexpected(u"its index cannot be read"_s);
        return read;
    }

    Read<Track> readTrack(const Box& trackBox) {
        const auto boxes = children(trackBox);
        if (!boxes) return std::unexpected(boxes.error());
        Track track;
        for (const Box& box : *boxes) {
            const auto read = box.type == "tkhd"   ? readHeader(track, box)
                              : box.type == "tref" ? readReferences(track, box)
                              : box.type == "mdia" ? readMedia(track, box)
                                                   : Read<void>();
            if (!read) return std::unexpected(read.error());
        }
        if (track.kind != Kind::other && track.flags.offset == 0)
            return std::unexpected(u"a track of it has no header"_s);
        return track;
    }

    Read<void> readHeader(Track& track, const Box& box) const {
        // Version, flags, two times, identifier; the times are longer in the second version.
        constexpr qint64 longest = 24;
        const auto header = bytes(box.begin, longest, box.end);
        if (!header) return std::unexpected(header.error());
        track.flags = {box.begin + 3, header->at(3)};
        track.identifier = numberAt(*header, header->at(0) == 0 ? 12 : 20);
        return {};
    }

    Read<void> readReferences(Track& track, const Box& references) {
        const auto boxes = children(references);
        if (!boxes) return std::unexpected(boxes.error());
        for (const Box& box : *boxes) {
            const qint64 count = (box.end - box.begin) / 4;
            if (box.type != "chap") continue;
            if (count > mostReferences) return std::unexpected(u"a track of it has too many chapters"_s);
            const auto identifiers = bytes(box.begin, count * 4, box.end);
            if (!identifiers) return std::unexpected(identifiers.error());
            for (qint64 one = 0; one < count; ++one) track.chapters.append(numberAt(*identifiers, one * 4));
        }
        return {};
    }

    Read<void> readMedia(Track& track, const Box& media) {
        const auto boxes = children(media);
        if (!boxes) return std::unexpected(boxes.error());
        const auto handler = std::ranges::find(*boxes, "hdlr", &Box::type);
        if (handler == boxes->end()) return {};
        const auto type = bytes(handler->begin + 8, 4, handler->end);
        if (!type) return std::unexpected(type.error());
        track.kind = kindOf(*type);
        return {};
    }

    static QList<Track> withoutChapters(QList<Track> tracks) {
        QSet<quint32> chapters;
        for (const Track& track : tracks)
            for (const quint32 identifier : track.chapters) chapters.insert(identifier);
        tracks.removeIf([&](const Track& track) { return chapters.contains(track.identifier); });
        return tracks;
    }

    int descriptor_;
    qint64 size_;
    int boxes_ = 0;
};

Read<QList<BytePatch>> patchesFor(const QList<Track>& tracks, Kind kind, const TrackChoice::Track& chosen) {
    QList<BytePatch> patches;
    int number = 0;
    for (const Track& track : tracks) {
        if (track.kind != kind) continue;
        const bool isOn = ++number == chosen.number;
        const char flags = char(isOn ? track.flags.value | enabled : track.flags.value & ~enabled);
        if (flags != track.flags.value) patches.append({track.flags.offset, flags});
    }
    if (number != chosen.count)
        return std::unexpected(u"it has %1 tracks of a kind rather than %2"_s.arg(number).arg(chosen.count));
    return patches;
}

}  // namespace

std::expected<QList<BytePatch>, QString> trackOverlay(int descriptor, qint64 size,
                                                      const TrackChoice& choice) {
    QList<BytePatch> patches;
    if (choice == TrackChoice()) return patches;
    const auto tracks = IndexReader(descriptor, size).tracks();
    if (!tracks) return std::unexpected(tracks.error());
    for (const auto& [kind, chosen] :
         {std::pair{Kind::audio, choice.audio}, std::pair{Kind::subtitle, choice.subtitle}}) {
        if (!chosen) continue;
        const auto ofKind = patchesFor(*tracks, kind, *chosen);
        if (!ofKind) return std::unexpected(ofKind.error());
        patches += *ofKind;
    }
    std::ranges::sort(patches, {}, &BytePatch::offset);
    return patches;
}

}  // namespace velmora
