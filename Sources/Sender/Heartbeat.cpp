#include "Sender/Heartbeat.h"

using namespace std::chrono_literals;

namespace velmora {

Heartbeat::Heartbeat(Clock& clock, std::unique_ptr<Connection> connection)
    : clock_(clock), connection_(std::move(connection)) {}

void Heartbeat::start() {
    beat();
}

QCoro::Task<> Heartbeat::beat() {
    const auto weak = weak_from_this();
    Request request;
    request.method = "POST";
    request.target = "/feedback";
    request.version = "RTSP/1.0";
    request.headers.append("CSeq", QByteArray::number(++sequence_));
    const Connection::Answer answer = co_await connection_->send(request);
    const auto self = weak.lock();
    if (!self || !answer || !answer->isSuccess()) co_return;
    constexpr Clock::Duration interval = 2s;
    self->next_ = self->clock_.after(interval, [weak] {
        if (const auto alive = weak.lock()) alive->beat();
    });
}

}  // namespace velmora
