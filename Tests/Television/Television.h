#pragma once

#include "Sender/Receiver.h"
#include "Television/Context.h"
#include "Television/Guest.h"
#include "Television/PairingVerbs.h"
#include "Television/PlayVerbs.h"
#include "Television/Publication.h"
#include "Television/SimulatedPlayer.h"

#include <QObject>
#include <QStringList>
#include <QTcpServer>

#include <expected>
#include <memory>

namespace velmora::test {

/// A receiver of video in any of the flavours that there are, strict wherever some real receiver is. Lives
/// in tests, and as a program of its own.
class Television : public QObject {
    Q_OBJECT

  public:
    using Options = TelevisionOptions;

    Television(Clock& clock, const Options& options, QObject* parent = nullptr);
    ~Television() override;

    /// Also announces it, where that is asked for. Fails with the reason.
    [[nodiscard]] std::expected<void, QString> listen();
    /// As a sender that has seen its announcement knows it.
    [[nodiscard]] Receiver receiver() const;

    /// For the viewer's remote, and to see what plays.
    [[nodiscard]] SimulatedPlayer& player() { return player_; }

    /// Whether a viewer sees the movie.
    [[nodiscard]] bool showsPicture() const {
        return player_.state() == SimulatedPlayer::State::playing && !context_.headless;
    }

    /// The PIN to type; changes only what is shown from now on.
    [[nodiscard]] const QString& pin() const { return options_.pin; }
    /// Lets a test answer requests in its stead.
    void onRequest(Interference interfere) { context_.interfere = std::move(interfere); }
    /// As when its settings are reset.
    void forgetPairings() { pairings_.forget(); }

    /// What a sender did wrong, in the order of doing.
    [[nodiscard]] const QStringList& complaints() const { return complaints_; }
    /// Method and target of every request.
    [[nodiscard]] const QList<QByteArray>& requests() const { return requests_; }
    [[nodiscard]] int unansweredEvents() const;

  Q_SIGNALS:
    /// A line for whoever watches: what plays now, a PIN ("PIN 1234"), or what is wrong.
    void said(const QString& line);

  private:
    void accept();
    void left(Guest* guest);
    void checkOrderSoon();
    void misbehaveAfterPlay();
    void tell(SimulatedPlayer::State state, const QString& reason);
    void sendEvent(const QString& state, const QString& reason);
    void complain(const QString& reason);

    Clock& clock_;
    Options options_;
    QTcpServer server_;
    SimulatedPlayer player_;
    Context context_;
    Pairings pairings_;
    PlayVerbs verbs_;
    QList<Guest*> guests_;
    std::unique_ptr<Publication> publication_;
    bool silent_ = false;
    QStringList complaints_;
    QList<QByteArray> requests_;
    Clock::Timer dropping_;
    Clock::Timer falling_;
    Clock::Timer checking_;
};

}  // namespace velmora::test
