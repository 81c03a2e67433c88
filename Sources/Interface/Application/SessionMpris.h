#pragma once

#include "Interface/Application/Freedesktop/MprisPlayer.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>

namespace velmora {

class Session;

/// Keeps a window's media player on the bus as its session is, and the session as the media keys want it.
/// Main thread only.
class SessionMpris : public QObject {
    Q_OBJECT

  public:
    struct Window {
        std::function<void()> raise;
        std::function<void()> close;
        std::function<void(const QUrl& movie)> open;
    };

    /// The session must outlive it.
    SessionMpris(Session& session, const Window& window, QObject* parent = nullptr);

  private:
    void follow();
    void followTime();
    [[nodiscard]] MprisState state() const;

    Session& session_;
    MprisPlayer player_;
    std::optional<QUrl> source_;
    int trackNumber_ = 0;
    QUrl art_;
    double duration_ = 0;
};

}  // namespace velmora
