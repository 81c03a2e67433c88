#pragma once

#include "System/Player.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// The part of a `LinuxPlayer` that is on this computer: one file at a time. Main thread only; nothing waits.
class LocalEngine : public QObject {
    Q_OBJECT

  public:
    using Maker = std::function<std::unique_ptr<LocalEngine>()>;

    struct Track {
        MediaGroup::Kind kind = MediaGroup::Kind::audible;
        int number = 0;  ///< from 1 in its kind, as in the file
        QString title{};
        QString language{};  ///< the tag as the file has it
        int channels = 0;    ///< 0 when unknown
        bool isForced = false;
        bool describesSound = false;
        bool isSelected = false;  ///< when the file was loaded

        friend bool operator==(const Track&, const Track&) = default;
    };

    enum class Seek {
        exact,
        keyFrame,  ///< to the key frame before; quicker
    };
    using Sought = std::function<void(bool finished)>;

    using QObject::QObject;

    /// Starts over with this file, paused unless told otherwise. The outcome is `ready` or `failed`.
    virtual void load(const QString& file) = 0;
    virtual void unload() = 0;

    virtual void setPaused(bool paused) = 0;
    [[nodiscard]] virtual bool isPaused() const = 0;

    /// Waits for the file to be ready, for the seek under way and for a track change. `done` is called once,
    /// from the event loop: with false when another seek or another file came between.
    virtual void seek(double seconds, Seek how, Sought done) = 0;
    /// A number out of `tracks`; absent turns the kind off.
    virtual void selectTrack(MediaGroup::Kind kind, std::optional<int> number) = 0;

    [[nodiscard]] virtual bool isReady() const = 0;
    /// Seconds; during a seek its target. Absent without a file.
    [[nodiscard]] virtual std::optional<double> position() const = 0;
    /// Seconds; absent until ready, and where the file does not tell.
    [[nodiscard]] virtual std::optional<double> duration() const = 0;
    /// Empty until ready.
    [[nodiscard]] virtual QList<Track> tracks() const = 0;

    /// Whether the last picture stays at the end.
    virtual void setKeepsLastPicture(bool on) = 0;

  Q_SIGNALS:
    void ready();
    /// The file cannot be played, or breaks off: in plain words.
    void failed(const QString& reason);
    /// Played to the end, and paused there.
    void ended();
};

}  // namespace velmora
