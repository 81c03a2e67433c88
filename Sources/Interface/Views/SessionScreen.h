#pragma once

#include "Interface/Views/MovieScreenModel.h"
#include "Interface/Views/RoutePickerModel.h"

#include <QObject>

namespace velmora {

class Desktop;
class Session;

/// Keeps a window's models as its session is, and does to the session what the user wants. Main thread only.
class SessionScreen : public QObject {
    Q_OBJECT

  public:
    /// All of them must outlive it. The picker becomes the session's own.
    SessionScreen(Session& session, Desktop& desktop, MovieScreenModel& movie, RoutePickerModel& picker,
                  QObject* parent = nullptr);

  private:
    void follow();
    void obey();
    void goOnAnswered();
    void showState();
    void showArtwork();
    void showTracks();
    void chooseMovie();
    void choose(const QString& identifier, bool isAudio);
    void transcode();

    Session& session_;
    Desktop& desktop_;
    MovieScreenModel& movie_;
    RoutePickerModel& picker_;
};

}  // namespace velmora
