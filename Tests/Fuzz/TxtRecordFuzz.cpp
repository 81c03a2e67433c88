// Whatever a network announces becomes a receiver that can be shown, judged and remembered.
#include "Sender/Discovery/Flavour.h"
#include "Sender/Discovery/Sightings.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// Byte strings, each behind its length: the way a TXT record comes.
QList<QByteArray> entriesFrom(const uint8_t* data, size_t size) {
    QList<QByteArray> entries;
    for (size_t at = 0; at < size;) {
        const size_t length = std::min<size_t>(data[at], size - at - 1);
        entries.append(
            QByteArray(reinterpret_cast<const char*>(data) + at + 1, static_cast<qsizetype>(length)));
        at += length + 1;
    }
    return entries;
}

bool isFitToBeShown(const QString& text) {
    return std::ranges::none_of(text, [](QChar c) { return c.category() == QChar::Other_Control; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velmora;
    const QList<QByteArray> entries = entriesFrom(data, size);
    const TxtRecord record = TxtRecord::parse(entries);
    if (!isFitToBeShown(record.model) || !isFitToBeShown(record.systemVersion)) std::abort();
    if (!record.publicKey.isEmpty() && record.publicKey.size() != 32) std::abort();

    const QString name = entries.isEmpty() ? QString() : QString::fromUtf8(entries.first());
    const Sighting sighting{
        .service = name, .port = 7000, .addresses = {QHostAddress(0xC0000201)}, .record = record};
    for (const Receiver& receiver : receiversFrom({sighting, sighting})) {
        if (!isFitToBeShown(receiver.name) || receiver.identifier.isEmpty()) std::abort();
        const Course course = Course::decide(receiver, {}, {});
        if (!receiver.takesVideo() && !course.approaches.isEmpty()) std::abort();
    }
    return 0;
}
