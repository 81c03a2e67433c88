// Whatever parses survives being written and parsed again.
#include "Sender/Pairing/Tlv8.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velmora;
    const auto items = Tlv8::parse(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (items && Tlv8::parse(Tlv8::encode(*items)) != *items) std::abort();
    return 0;
}
