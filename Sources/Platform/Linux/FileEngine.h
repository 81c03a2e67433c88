#pragma once

#include "Platform/Linux/LocalEngine.h"

#include <QDateTime>

#include <thread>

namespace velmora {

/// For players that only ever play on televisions: finds out how long a movie is and which tracks it has, and
/// keeps a place in it. Nothing is decoded, shown or heard, and the place does not move by itself.
class FileEngine : public LocalEngine {
    Q_OBJECT

  public:
    /// Its engines tell each other what they found in the file that they had last: a handover takes a player
    /// for each attempt, and the television is not to wait for what is known.
    [[nodiscard]] static Maker maker();

    FileEngine() : FileEngine(std::make_shared<Known>()) {}
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
    [[nodiscard]] QList<Track> tracks() const override { return tracks_; }
    void setKeepsLastPicture(bool /*on*/) override {}

  private:
    enum class Stage { empty, loading, ready };
    struct Known {
        QString file;
        QDateTime modified;
        double duration = 0;
        QList<Track> tracks;
    };

    explicit FileEngine(std::shared_ptr<Known> known) : known_(std::move(known)) {}

    void takeProbed(quint64 number, const Known& file);
    void takeLoaded(quint64 number, const Known& file);
    void takeMissing(quint64 number);
    void answer(bool finished);

    const std::shared_ptr<Known> known_;
    Stage stage_ = Stage::empty;
    bool isPaused_ = true;
    quint64 number_ = 0;  ///< of the file; news of an older one are dropped
    double position_ = 0;
    std::optional<double> duration_;
    QList<Track> tracks_;
    Sought sought_;  ///< until the file is ready
    std::jthread thread_;
};

}  // namespace velmora
