#pragma once

#include "Television/Context.h"
#include "Television/SimulatedPlayer.h"

#include <QObject>

namespace velmora::test {

/// The requests that play and steer a movie by its address: on plain connections, and in sessions without a
/// queue.
class PlayVerbs : public QObject {
    Q_OBJECT

  public:
    explicit PlayVerbs(Context& context) : context_(context) {}

    /// `asker` stands for the connection.
    [[nodiscard]] Response answer(const QObject* asker, const Request& request);
    /// A connection ended, and with it the movie that it brought.
    void leave(const QObject* asker);

  Q_SIGNALS:
    /// A movie was taken, for real or not.
    void taken();

  private:
    using Verb = Response (PlayVerbs::*)(const QObject* asker, const Request& request);
    struct Route {
        const char* method;
        const char* path;
        Verb verb;
    };
    static const QList<Route> routes;

    Response serverInfo(const QObject* asker, const Request& request);
    Response play(const QObject* asker, const Request& request);
    Response rate(const QObject* asker, const Request& request);
    Response scrub(const QObject* asker, const Request& request);
    Response playbackInfo(const QObject* asker, const Request& request);
    Response setProperty(const QObject* asker, const Request& request);
    Response stop(const QObject* asker, const Request& request);
    Response feedback(const QObject* asker, const Request& request);
    Response refuse(const QString& reason);

    Context& context_;
    const QObject* playing_ = nullptr;  // who brought the movie
    int failures_ = 0;
};

}  // namespace velmora::test
