#pragma once

#include "Interface/Views/MenuRows.h"
#include "Interface/Views/MovieState.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// What the views of one window bind to, and where their controls' wishes come out as signals. It decides by
/// `MovieDecisions`, and keeps only what the pointer does on the timeline. Main thread only.
class MovieScreenModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")

    Q_PROPERTY(Screen screen READ screen NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString windowTitle READ windowTitle NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString title READ title NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString status READ status NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString statusSymbol READ statusSymbol NOTIFY stateChanged FINAL)
    Q_PROPERTY(Tone statusTone READ statusTone NOTIFY stateChanged FINAL)

    Q_PROPERTY(QString playHelp READ playHelp NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString playName READ playName NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString playSymbol READ playSymbol NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool isPlaySolid READ isPlaySolid NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool canPlay READ canPlay NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool canControl READ canControl NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString airPlayHelp READ airPlayHelp NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool canAirPlay READ canAirPlay NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool isAirPlayLit READ isAirPlayLit NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool hasDevice READ hasDevice NOTIFY stateChanged FINAL)

    Q_PROPERTY(QString discSymbol READ discSymbol NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool isDiscUnderPointerOnly READ isDiscUnderPointerOnly NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool canPressStill READ canPressStill NOTIFY stateChanged FINAL)
    Q_PROPERTY(double stillOpacity READ stillOpacity NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool showsLiveFrame READ showsLiveFrame NOTIFY stateChanged FINAL)

    Q_PROPERTY(bool isPreparing READ isPreparing NOTIFY stateChanged FINAL)
    Q_PROPERTY(double progress READ progress NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString percentText READ percentText NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString timeLeftText READ timeLeftText NOTIFY stateChanged FINAL)

    Q_PROPERTY(QString failureMessage READ failureMessage NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool canTranscode READ canTranscode NOTIFY stateChanged FINAL)
    Q_PROPERTY(bool toolsMissing READ toolsMissing NOTIFY stateChanged FINAL)

    Q_PROPERTY(double duration READ duration NOTIFY timelineChanged FINAL)
    Q_PROPERTY(double position READ position NOTIFY timelineChanged FINAL)
    Q_PROPERTY(QString elapsedText READ elapsedText NOTIFY timelineChanged FINAL)
    Q_PROPERTY(QString remainingText READ remainingText NOTIFY timelineChanged FINAL)
    Q_PROPERTY(QString widestTime READ widestTime NOTIFY timelineChanged FINAL)
    Q_PROPERTY(QString spokenPosition READ spokenPosition NOTIFY timelineChanged FINAL)
    Q_PROPERTY(bool isDragging READ isDragging NOTIFY timelineChanged FINAL)
    Q_PROPERTY(bool isPointing READ isPointing NOTIFY timelineChanged FINAL)
    Q_PROPERTY(double pointedTime READ pointedTime NOTIFY timelineChanged FINAL)
    Q_PROPERTY(double moviePosition READ moviePosition NOTIFY timelineChanged FINAL)
    Q_PROPERTY(QString previewText READ previewText NOTIFY timelineChanged FINAL)
    Q_PROPERTY(QImage previewPicture READ previewPicture NOTIFY timelineChanged FINAL)

    Q_PROPERTY(QImage poster READ poster NOTIFY posterChanged FINAL)
    Q_PROPERTY(bool hasPoster READ hasPoster NOTIFY posterChanged FINAL)
    Q_PROPERTY(QImage stillPicture READ stillPicture NOTIFY artworkChanged FINAL)

    Q_PROPERTY(bool canChooseTracks READ canChooseTracks NOTIFY tracksChanged FINAL)
    Q_PROPERTY(velmora::MenuRows* mediaRows READ mediaRows CONSTANT FINAL)

  public:
    // QML wants capitals here.
    // NOLINTBEGIN(readability-identifier-naming)
    enum Screen { Empty, Failed, Movie };
    Q_ENUM(Screen)
    enum Tone { Quiet, Plain, Warning };
    Q_ENUM(Tone)
    // NOLINTEND(readability-identifier-naming)

    explicit MovieScreenModel(QObject* parent = nullptr);

    void show(const MovieState& state);
    void show(const MovieArtwork& artwork);
    void show(const MovieTracks& tracks);

    [[nodiscard]] Screen screen() const;
    [[nodiscard]] QString windowTitle() const { return state_.title; }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString status() const;
    [[nodiscard]] QString statusSymbol() const;
    [[nodiscard]] Tone statusTone() const;

    [[nodiscard]] QString playHelp() const;
    [[nodiscard]] QString playName() const;
    [[nodiscard]] QString playSymbol() const;
    [[nodiscard]] bool isPlaySolid() const;
    [[nodiscard]] bool canPlay() const { return state_.canPlayAction; }
    [[nodiscard]] bool canControl() const { return state_.canControlPlayback; }
    [[nodiscard]] QString airPlayHelp() const;
    [[nodiscard]] bool canAirPlay() const { return state_.hasOutputContext; }
    [[nodiscard]] bool isAirPlayLit() const;
    [[nodiscard]] bool hasDevice() const { return state_.deviceName.has_value(); }

    [[nodiscard]] QString discSymbol() const;
    [[nodiscard]] bool isDiscUnderPointerOnly() const;
    [[nodiscard]] bool canPressStill() const;
    [[nodiscard]] double stillOpacity() const;
    [[nodiscard]] bool showsLiveFrame() const { return state_.showsLiveFrame; }

    [[nodiscard]] bool isPreparing() const { return state_.phase.preparing() != nullptr; }
    /// 0…1; negative when unknown.
    [[nodiscard]] double progress() const;
    [[nodiscard]] QString percentText() const;
    [[nodiscard]] QString timeLeftText() const;

    [[nodiscard]] QString failureMessage() const;
    [[nodiscard]] bool canTranscode() const;
    [[nodiscard]] bool toolsMissing() const { return state_.toolsMissing; }

    // Times are in seconds. `position` follows the hand that drags, `moviePosition` does not.
    [[nodiscard]] double duration() const { return state_.timeline.duration; }
    [[nodiscard]] double position() const { return isDragging_ ? pointedTime_ : moviePosition(); }
    [[nodiscard]] double moviePosition() const { return state_.timeline.position; }
    [[nodiscard]] QString elapsedText() const;
    [[nodiscard]] QString remainingText() const;  ///< empty when the duration is unknown
    [[nodiscard]] QString widestTime() const;
    [[nodiscard]] QString spokenPosition() const;
    [[nodiscard]] bool isDragging() const { return isDragging_; }
    [[nodiscard]] bool isPointing() const { return isPointing_; }
    [[nodiscard]] double pointedTime() const { return pointedTime_; }
    [[nodiscard]] QString previewText() const;
    [[nodiscard]] QImage previewPicture() const { return preview_; }

    [[nodiscard]] QImage poster() const { return artwork_.poster; }
    [[nodiscard]] bool hasPoster() const { return !artwork_.poster.isNull(); }
    [[nodiscard]] QImage stillPicture() const;

    [[nodiscard]] bool canChooseTracks() const;
    [[nodiscard]] MenuRows* mediaRows() { return &mediaRows_; }

    Q_INVOKABLE void pressStill();
    Q_INVOKABLE void seekBy(double seconds);
    /// True when there was something to open; only the first of several is.
    Q_INVOKABLE bool drop(const QList<QUrl>& locations);

    /// The pointer is over the timeline at this time, or (`unpoint`) no longer.
    Q_INVOKABLE void point(double seconds);
    Q_INVOKABLE void unpoint();
    /// The timeline is held at this time. Seeking waits until `release`: a hand on its way would otherwise
    /// send the television one seek after another.
    Q_INVOKABLE void drag(double seconds);
    Q_INVOKABLE void release();
    /// Ends a drag without a seek.
    Q_INVOKABLE void cancelDrag();

  Q_SIGNALS:
    void stateChanged();
    void timelineChanged();
    void artworkChanged();
    void posterChanged();
    void tracksChanged();

    // What the user wants. QML emits those that need no deciding.
    void playRequested();
    void togglePlayPauseRequested();
    void seekRequested(double seconds);
    /// The picture to keep on the still until that seek is over; null when there is none.
    void previewKept(const QImage& picture);
    void cancelRequested();
    void chooseRequested();
    void transcodeRequested();
    void openRequested(const QUrl& location);
    void pickRouteRequested();
    void audioChosen(const QString& identifier);
    void subtitleChosen(const QString& identifier);  ///< empty: off

  private:
    void chooseTrack(const QString& rowIdentifier);
    void showPreview(double seconds);

    MovieState state_;
    MovieArtwork artwork_;
    MovieTracks tracks_;
    MenuRows mediaRows_;

    bool isPointing_ = false;
    bool isDragging_ = false;
    double pointedTime_ = 0;
    QImage preview_;
};

}  // namespace velmora
