#pragma once

#include "Television/ControlConnection.h"
#include "Television/PairingVerbs.h"
#include "Television/PasswordGuard.h"
#include "Television/PlayVerbs.h"
#include "Television/Session/SessionVerbs.h"

#include <memory>

namespace velmora::test {

/// One connection of a sender, and what the sender may do there: first be trusted as the flavour asks, then
/// play.
class Guest : public QObject {
    Q_OBJECT

  public:
    Guest(Context& context, Pairings& pairings, PlayVerbs& verbs, QTcpSocket* socket,
          QObject* parent = nullptr);

    [[nodiscard]] ControlConnection& connection() { return connection_; }
    /// Answers nothing any more.
    void fallSilent();
    /// Null before the connection is sealed.
    [[nodiscard]] const SessionVerbs* session() const { return session_.get(); }
    [[nodiscard]] int unansweredEvents() const;

  Q_SIGNALS:
    void requested(const velmora::Request& request);
    void left();

  private:
    void take(const Request& request);
    void answer(const Request& request, const Reply& reply);
    void answerPlain(const Request& request, const Reply& reply);
    [[nodiscard]] Response reverse(const Request& request);

    Context& context_;
    PlayVerbs& verbs_;
    ControlConnection connection_;
    PairingVerbs pairing_;
    PasswordGuard password_;
    std::unique_ptr<SessionVerbs> session_;
    bool silent_ = false;
};

}  // namespace velmora::test
