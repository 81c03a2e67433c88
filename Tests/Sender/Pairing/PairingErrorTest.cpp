#include "Sender/Pairing/PairingError.h"

#include <gtest/gtest.h>

namespace velmora {

using Kind = PairingError::Kind;
using Stage = PairingStage;

TEST(PairingErrorTest, readsStatusesByTheirStage) {
    const struct {
        int status;
        Stage stage;
        std::optional<Kind> kind;
    } cases[] = {
        {200, Stage::verify, {}},
        {453, Stage::pinStart, {}},
        {453, Stage::setupStart, Kind::busy},
        {409, Stage::verify, Kind::busy},
        {503, Stage::transient, Kind::busy},
        {400, Stage::pinStart, Kind::accessRestricted},
        {403, Stage::pinStart, Kind::accessRestricted},
        {470, Stage::setupStart, Kind::accessRestricted},
        {400, Stage::setupProof, Kind::malformed},
        {470, Stage::setupProof, Kind::wrongPin},
        {401, Stage::setupProof, Kind::wrongPin},
        {470, Stage::setupIdentity, Kind::refused},
        {470, Stage::transient, Kind::pinNeeded},
        {403, Stage::verify, Kind::forgotten},
        {470, Stage::verify, Kind::forgotten},
        {501, Stage::verify, Kind::unavailable},
        {500, Stage::setupProof, Kind::refused},
        {101, Stage::verify, Kind::refused},
    };
    for (const auto& [status, stage, kind] : cases) {
        const auto error = pairingErrorFromStatus(status, stage);
        ASSERT_EQ(error.has_value(), kind.has_value()) << status;
        if (error) {
            EXPECT_EQ(error->kind, *kind) << status << " at " << static_cast<int>(stage);
        }
    }
}

TEST(PairingErrorTest, roundsWaitsUp) {
    const struct {
        int seconds;
        const char* words;
    } cases[] = {{0, "a few minutes."},    {1, "Wait 1 second,"},    {64, "Wait 64 seconds,"},
                 {120, "Wait 2 minutes,"}, {121, "Wait 3 minutes,"}, {10773, "Wait 3 hours,"}};
    for (const auto& [seconds, words] : cases) {
        const QString text = explanation({Kind::wait, std::chrono::seconds(seconds)});
        EXPECT_TRUE(text.contains(QString::fromLatin1(words))) << text.toStdString();
    }
}

TEST(PairingErrorTest, hasASentenceForEverything) {
    for (int kind = 0; kind <= static_cast<int>(Kind::refused); ++kind)
        EXPECT_TRUE(explanation({static_cast<Kind>(kind)}).endsWith(u'.')) << kind;
}

}  // namespace velmora
