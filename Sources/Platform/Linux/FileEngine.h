#pragma once

#include "Platform/Linux/LocalEngine.h"

#include <thread>

namespace velmora {

/// For players that only ever play on televisions: finds out how long a movie is, and keeps a place in it.
/// Nothing is decoded, shown or heard, and the place does not move by itself; tracks are not told.
class FileEngine : public LocalEngine {
    Q_OBJECT

  public:
    using LocalEngine::LocalEngine;
    /// Waits for the program that it may have asked.
    ~FileEngine() override;

    void load(const QString& file) override;
    void unload() override;
    void setPaused(bool paused) override { isPaused_ = paused; }
    [[nodiscard]] bool isPaused() const override { return isPaused_; }
    void seek(double seconds, Seek how, Sought done) override;
    void selectTrack(MediaGroup::Kind /*kind*/, std::optional<int> /*number*/) override {}
    [[nodiscard]] bool isReady() const override { return stage_ == Stage::ready; }
    [[nodiscard]] std::optional<double> position() const override;
    [[nodiscard]] std::optional<double> duration() const override { return duration_; }
    [[nodiscard]] QList<Track> tracks() const override { return {}; }
    void setKeepsLastPicture(bool /*on*/) override {}

  private:
    enum class Stage { empty, loading, ready };

    void takeLoaded(quint64 file, bool isThere, double duration);
    void answer(bool finished);

    Stage stage_ = Stage::empty;
    bool isPaused_ = true;
    quint64 file_ = 0;  ///< counts them; news of an older one are dropped
    double position_ = 0;
    std::optional<double> duration_;
    Sought sought_;  ///< until the file is ready
    std::jthread thread_;
};

}  // namespace velmora
