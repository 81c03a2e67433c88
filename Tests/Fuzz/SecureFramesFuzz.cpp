// Forged bytes never open; genuine frames open to the same text however they are cut, and not at all once one
// bit of them is changed.
#include "Sender/Pairing/SecureFrames.h"

#include <QByteArray>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>

namespace {

using velmora::FrameOpener;
using velmora::FrameSealer;

void require(bool holds) {
    if (!holds) std::abort();
}

velmora::Secret key() {
    return velmora::Secret(QByteArrayView(QByteArray(32, 'k')));
}

void openForged(FuzzedDataProvider& input) {
    FrameOpener opener(key());
    while (input.remaining_bytes() > 0) {
        const std::string chunk = input.ConsumeRandomLengthString();
        const auto text = opener.open(chunk);
        require(!text || text->isEmpty());
    }
}

void openGenuine(FuzzedDataProvider& input) {
    FrameSealer sealer(key());
    QByteArray plain;
    QByteArray frames;
    for (int count = input.ConsumeIntegralInRange(1, 4); count > 0; --count) {
        const QByteArray part(input.ConsumeIntegralInRange(0, 3000), input.ConsumeIntegral<char>());
        plain += part;
        frames += sealer.seal(part);
    }
    const bool damage = input.ConsumeBool() && !frames.isEmpty();
    if (damage) {
        const auto position = input.ConsumeIntegralInRange<qsizetype>(0, frames.size() - 1);
        frames[position] = static_cast<char>(frames[position] ^ (1 << input.ConsumeIntegralInRange(0, 7)));
    }
    FrameOpener opener(key());
    QByteArray text;
    bool failed = false;
    for (QByteArrayView rest = frames; !rest.isEmpty() && !failed;) {
        // What is left when the input has run out comes in one piece.
        const qsizetype size = rest.size() - input.ConsumeIntegralInRange<qsizetype>(0, rest.size() - 1);
        const auto opened = opener.open(rest.first(size));
        failed = !opened;
        text += opened.value_or(QByteArray());
        rest = rest.sliced(size);
    }
    require(plain.startsWith(text));
    require(damage ? failed || !opener.isBetweenFrames() : text == plain);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool())
        openGenuine(input);
    else
        openForged(input);
    return 0;
}
