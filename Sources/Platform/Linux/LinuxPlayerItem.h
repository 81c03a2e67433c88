#pragma once

#include "Platform/Linux/LocalEngine.h"
#include "System/Player.h"

#include <QList>

#include <array>
#include <optional>
#include <vector>

namespace velmora {

/// The items of `LinuxPlayer`, which tells them what it finds in the file.
class LinuxPlayerItem : public PlayerItem {
    Q_OBJECT

  public:
    explicit LinuxPlayerItem(QUrl file) : file_(std::move(file)) {}

    [[nodiscard]] QUrl file() const override { return file_; }
    [[nodiscard]] Status status() const override { return status_; }
    [[nodiscard]] QString error() const override { return error_; }
    [[nodiscard]] std::optional<double> duration() const override { return duration_; }
    void loadGroup(MediaGroup::Kind kind, GroupLoaded loaded) override;
    [[nodiscard]] std::optional<MediaOption> selected(MediaGroup::Kind kind) const override;
    void select(const std::optional<MediaOption>& option, MediaGroup::Kind kind) override;

    void takeLoaded(std::optional<double> duration, const QList<LocalEngine::Track>& tracks);
    /// Before the item is ready, or in the middle of the movie.
    void takeFailure(const QString& reason);

    /// The number of the selected track; absent when the kind is off.
    [[nodiscard]] std::optional<int> selectedTrack(MediaGroup::Kind kind) const;
    /// 0 while they are not known.
    [[nodiscard]] int trackCount(MediaGroup::Kind kind) const;

    /// The tracks of one kind as choices; absent when there are none.
    [[nodiscard]] static std::optional<MediaGroup> groupOf(const QList<LocalEngine::Track>& tracks,
                                                           MediaGroup::Kind kind);

  Q_SIGNALS:
    void selectionChanged(velmora::MediaGroup::Kind kind);

  private:
    struct Waiting {
        MediaGroup::Kind kind;
        GroupLoaded loaded;
    };

    void answerAll();

    QUrl file_;
    Status status_ = Status::unknown;
    QString error_;
    std::optional<double> duration_;
    QList<LocalEngine::Track> tracks_;
    std::array<std::optional<int>, 2> selected_;  ///< track numbers, by kind
    std::vector<Waiting> waiting_;                ///< until the item is ready or has failed
};

}  // namespace velmora
