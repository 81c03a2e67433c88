#pragma once

#include "Playback/SessionPhase.h"

#include <QImage>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace velmora {

/// All that a window's movie screen depends on, read off the session, its route and its televisions. A value.
struct MovieState {
    struct Timeline {
        double position = 0;  ///< seconds
        double duration = 0;  ///< seconds; 0 when unknown
        friend bool operator==(const Timeline&, const Timeline&) = default;
    };

    SessionPhase phase;
    QString title;                          ///< the session's
    std::optional<QString> lastMovieTitle;  ///< absent when no movie is offered to go on with
    Timeline timeline;

    std::optional<QString> deviceName;     ///< of the chosen device; absent: this computer
    std::optional<QString> handingOverTo;  ///< the device that a handover to is under way
    bool isWaking = false;                 ///< that device was asleep
    QString notice;                        ///< why the movie is not there; empty when nothing is to be told
    bool hasOutputContext = false;
    bool isOnAppleTV = false;
    bool isPlaying = false;
    bool canPlayAction = false;
    bool canControlPlayback = false;
    bool showsLiveFrame = false;
    bool toolsMissing = false;  ///< matters on the empty screen only
};

/// The pictures of a movie. Null images are absent ones.
struct MovieArtwork {
    QImage poster;
    QImage scrubPreview;
    std::function<QImage(double seconds)> thumbnailAt;  ///< empty while there is no strip
};

/// The tracks that can be chosen, in the order of the file.
struct MovieTracks {
    struct Track {
        QString identifier;
        QString name;
    };
    QList<Track> audio;  ///< empty when there is no choice
    QList<Track> subtitles;
    std::optional<QString> chosenAudio;
    std::optional<QString> chosenSubtitle;  ///< absent: off
};

}  // namespace velmora
