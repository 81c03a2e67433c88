#pragma once

#include "Sender/Connection.h"
#include "System/Clock.h"

#include <QCoroTask>

#include <memory>

namespace velmora {

/// Keeps a session alive on the one receiver that ends it after fifteen seconds without `POST /feedback` on a
/// connection apart. Falls silent for good when the receiver does not answer with 200.
class Heartbeat : public std::enable_shared_from_this<Heartbeat> {
  public:
    Heartbeat(Clock& clock, std::unique_ptr<Connection> connection);
    void start();

  private:
    QCoro::Task<> beat();

    Clock& clock_;
    std::unique_ptr<Connection> connection_;
    Clock::Timer next_;
    int sequence_ = 0;
};

}  // namespace velmora
