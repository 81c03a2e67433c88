// Three hours of a movie on the television.
#include "Playback/Story.h"

#include <malloc.h>

namespace velmora {
namespace {

size_t heapInUse() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

TEST(LongMovie, TakesNoMoreMemoryTheLongerItPlays) {
    constexpr size_t unnoticed = size_t{32} * 1024;  // three bytes a second
    test::Story story;
    story.stage.length = 4 * 3600;
    story.startOnTelevision();
    story.run(5 * 60);
    const size_t before = heapInUse();
    story.run(3 * 3600);
    EXPECT_LT(heapInUse(), before + unnoticed);
    EXPECT_TRUE(story.session->isPlaying());
    EXPECT_GT(story.session->currentTime(), 3 * 3600);
}

}  // namespace
}  // namespace velmora
