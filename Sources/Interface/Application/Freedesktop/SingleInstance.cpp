#include "Interface/Application/Freedesktop/SingleInstance.h"

namespace velmora {

using namespace Qt::StringLiterals;

SingleInstance::SingleInstance(QDBusConnection bus, const QString& socketPath, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), service_(bus_), socket_(socketPath) {
    connect(&service_, &ApplicationService::requested, this, &SingleInstance::requested);
    connect(&socket_, &HandoverSocket::requested, this, &SingleInstance::requested);
}

std::expected<SingleInstance::Role, QString> SingleInstance::start(const LaunchRequest& request) {
    if (bus_.isConnected()) return startOnBus(request);
    const auto outcome = socket_.handOverOrListen(request);
    if (!outcome) return std::unexpected(outcome.error());
    return *outcome == HandoverSocket::Outcome::listening ? Role::first : Role::second;
}

std::expected<SingleInstance::Role, QString> SingleInstance::startOnBus(const LaunchRequest& request) {
    // The one that has the name may be just leaving: then the name is free at the next attempt.
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (service_.claim()) return Role::first;
        const auto done = service_.handOver(request);
        if (done) return Role::second;
        if (done.error() == ApplicationService::HandoverError::noAnswer) break;
    }
    return std::unexpected(u"Velmora is running but does not answer. Close it and try again."_s);
}

}  // namespace velmora
