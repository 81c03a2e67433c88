// Whatever a Range header says, what is served lies inside the file. The first byte sets the file's size.
#include "Sender/ByteRange.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using velmora::ByteRange;
    if (size == 0) return 0;
    const qint64 length = data[0] == 255 ? qint64{1} << 62 : qint64{data[0]} * data[0];
    const ByteRange range =
        ByteRange::parse({reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1}, length);
    const bool isInside = range.offset >= 0 && range.length >= 0 && range.offset <= length - range.length;
    if (range.kind != ByteRange::Kind::unsatisfiable && !isInside) std::abort();
    if (range.kind == ByteRange::Kind::part && range.length == 0) std::abort();
    return 0;
}
