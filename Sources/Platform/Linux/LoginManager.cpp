#include "Platform/Linux/LoginManager.h"

#include <QCoreApplication>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Player)
};

}  // namespace

std::optional<PowerManager::Assertion> LoginManager::preventIdleSleep(const QString& reason) {
    if (!buses_.system.isConnected() && !buses_.session.isConnected()) return std::nullopt;
    ++last_;
    held_.emplace(last_, Inhibitor({Inhibitor::idleSleep(buses_.system, reason),
                                    Inhibitor::screenSaver(buses_.session, reason),
                                    Inhibitor::portal(buses_.session, reason)}));
    return last_;
}

void LoginManager::release(Assertion assertion) {
    held_.erase(assertion);
}

std::shared_ptr<void> LoginManager::lightDisplay() const {
    const QString reason = Texts::tr("Velmora is playing a movie");
    const QList<Inhibitor::Offer> offers{Inhibitor::screenSaver(buses_.session, reason),
                                         Inhibitor::portal(buses_.session, reason)};
    return std::make_shared<Inhibitor>(offers);
}

}  // namespace velmora
