#pragma once

#include <QByteArray>
#include <QtEndian>

namespace velmora::test {

/// The parts of an MP4 that tell of its tracks.
namespace Boxes {

inline QByteArray number(quint32 value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

inline QByteArray box(const char* type, const QByteArray& content) {
    return number(quint32(content.size()) + 8) + type + content;
}

/// The same with a size of 64 bits.
inline QByteArray wideBox(const char* type, const QByteArray& content) {
    return number(1) + type + number(0) + number(quint32(content.size()) + 16) + content;
}

inline QByteArray header(quint32 identifier, bool isOn, char version = 0) {
    const QByteArray times(version == 0 ? 8 : 16, '\0');
    return box("tkhd", QByteArray(1, version) + QByteArray(2, '\0') + QByteArray(1, isOn ? 7 : 6) + times +
                           number(identifier) + QByteArray(60, '\0'));
}

inline QByteArray track(const char* handler, const QByteArray& tkhd, const QByteArray& more = {}) {
    const QByteArray hdlr = box("hdlr", QByteArray(8, '\0') + handler + QByteArray(13, '\0'));
    return box("trak", tkhd + more + box("mdia", box("mdhd", QByteArray(24, '\0')) + hdlr));
}

/// A picture, two sounds and two subtitles, the first of each on.
inline QByteArray tracks() {
    return track("vide", header(1, true)) + track("soun", header(2, true)) + track("soun", header(3, false)) +
           track("sbtl", header(4, true)) + track("sbtl", header(5, false));
}

inline QByteArray movie(const QByteArray& traks) {
    return box("ftyp", "isom") + box("moov", box("mvhd", QByteArray(100, '\0')) + traks) +
           box("mdat", QByteArray(1000, 'm'));
}

}  // namespace Boxes
}  // namespace velmora::test
