#pragma once

#include <QHostAddress>
#include <QVariant>

#include <expected>

/// The bodies of `SETUP`, each with all that is asked for, or what is wrong with it.
namespace velmora::test {

struct SessionSetup {
    enum class Timing { none, ntp, ptp };
    bool remoteOnly = false;
    Timing timing = Timing::none;
    quint16 timingPort = 0;
};
/// `sender` is the address at the connection's other end.
[[nodiscard]] std::expected<SessionSetup, QString> readSessionSetup(const QVariantMap& body,
                                                                    const QHostAddress& sender);

struct StreamSetup {
    bool remote = false;  ///< media-remote messages on a socket of their own; else the play queue
    quint64 seed = 0;
};
[[nodiscard]] std::expected<StreamSetup, QString> readStreamSetup(const QVariantMap& body);

}  // namespace velmora::test
