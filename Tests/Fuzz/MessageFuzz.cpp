// However the bytes are split, the same messages come out; what was read survives being written and read
// again.
#include "Sender/Message.h"

#include <cstdlib>

namespace {

using namespace velmora;

template <class Message>
QByteArray readAll(const QByteArray& bytes, qsizetype piece) {
    MessageReader<Message> reader;
    QByteArray all;
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        reader.feed(bytes.mid(at, piece));
        for (;;) {
            const auto next = reader.next();
            if (!next) return all + "!";
            if (!*next) break;
            all += (*next)->encoded();
        }
    }
    return all;
}

template <class Message>
void check(const QByteArray& bytes) {
    QByteArray whole = readAll<Message>(bytes, std::max<qsizetype>(1, bytes.size()));
    for (const qsizetype piece : {1, 7})
        if (readAll<Message>(bytes, piece) != whole) std::abort();
    if (whole.endsWith('!')) return;
    if (readAll<Message>(whole, 1000) != whole) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    check<Request>(bytes);
    check<Response>(bytes);
    return 0;
}
