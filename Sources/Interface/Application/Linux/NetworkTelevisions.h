#pragma once

#include "Interface/Views/Televisions.h"
#include "Sender/CredentialStore.h"
#include "Sender/RemotePlayback.h"
#include "System/Clock.h"

#include <QHash>
#include <QList>

namespace velmora {

class Discovery;
class NetworkOutputContext;
struct Receiver;

/// The televisions on the network as one window's picker reads them. Main thread only.
class NetworkTelevisions : public Televisions {
    Q_OBJECT

  public:
    /// All of these must outlive it.
    NetworkTelevisions(Clock& clock, Discovery& discovery, NetworkOutputContext& context,
                       const ReceiverMemory& memory);

    [[nodiscard]] QList<Television> televisions() const override;
    [[nodiscard]] QString unavailableReason() const override;
    void look() override {}  // looking never ends
    [[nodiscard]] QString add(const QString& address) override;
    void forget(const QString& identifier) override;
    [[nodiscard]] std::optional<TelevisionQuestion> question() const override { return question_; }
    void answer(const QString& secret) override;
    void dismiss() override;
    [[nodiscard]] QString outcome() const override { return outcome_; }

  private:
    [[nodiscard]] Television describe(const Receiver& receiver, const QList<Receiver>& known) const;
    void follow();
    void followQuestion();
    void keepQuestion(Clock::Duration untilAnswered);
    void followOutcome();
    [[nodiscard]] std::optional<TelevisionQuestion> questionNow();

    Clock& clock_;
    Discovery& discovery_;
    NetworkOutputContext& context_;
    ReceiverMemory memory_;
    RemotePlayback::Phase phase_ = RemotePlayback::Phase::idle;
    std::optional<TelevisionQuestion> question_;
    bool hasAnswered_ = false;  ///< the question that is put again follows a wrong answer
    bool isKept_ = false;       ///< the question stays until the television has said what it thinks
    Clock::Timer keeping_;
    QString outcome_;
    QHash<QString, Clock::Instant> nextTries_;  ///< by identifier: no code is taken before
};

}  // namespace velmora
