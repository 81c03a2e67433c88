// The remote control's stream: whatever frames are read carry no more than the bytes that came in, however
// they are cut, and what was unpacked once survives being packed and read again.
#include "Sender/Plist.h"
#include "Sender/Session/MediaRemote/DataFrame.h"
#include "Sender/Session/MediaRemote/MediaRemote.h"
#include "Sender/Session/MediaRemote/RemotePlayer.h"
#include "Sender/Session/SessionMessages.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

using namespace velmora;

void require(bool holds) {
    if (!holds) std::abort();
}

std::vector<DataFrame> framesIn(QByteArrayView bytes, qsizetype piece) {
    DataFrameReader reader;
    std::vector<DataFrame> frames;
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        reader.feed(bytes.sliced(at, std::min(piece, bytes.size() - at)));
        for (auto next = reader.next(); next && *next; next = reader.next()) frames.push_back(**next);
    }
    return frames;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const std::vector<DataFrame> frames = framesIn(bytes, std::max<qsizetype>(1, bytes.size()));
    require(framesIn(bytes, 7) == frames);
    qsizetype length = 0;
    RemotePlayer player;
    player.expect(120);
    for (const DataFrame& frame : frames) {
        length += DataFrame::headBytes + frame.body.size();
        const QVariant body = Plist::decode(frame.body).value_or(QVariant());
        const auto content = SessionMessages::unwrapped(body.toMap());
        const auto messages = MediaRemote::unpacked(content.value_or(frame.body));
        if (!messages) continue;
        for (const auto& message : *messages) {
            const auto again = MediaRemote::unpacked(MediaRemote::packed(message));
            require(again && again->size() == 1);
            (void)MediaRemote::failureIn(message);
            if (player.take(message, 1000)) require(std::isfinite(player.sample()->position));
        }
    }
    require(length <= bytes.size());
    return 0;
}
