#pragma once

#include "Sender/Message.h"
#include "Television/SimulatedPlayer.h"

#include <QHostAddress>
#include <QVariant>

#include <expected>
#include <optional>

/// The play queue's messages, as strictly read as the strictest receiver does it.
namespace velmora::test {

/// The number that the queue's stream has here.
constexpr int queueStream = 7;

/// What is inside the envelope of a `/command`, or what is wrong with the envelope.
[[nodiscard]] std::expected<QVariantMap, QString> readCommand(const Request& request);

/// The movie that an item names. `sender` is where it has to come from.
[[nodiscard]] std::expected<SimulatedPlayer::Movie, QString> readItem(const QVariantMap& item,
                                                                      const QHostAddress& sender);

/// A length of time as the queue writes it.
[[nodiscard]] QVariantMap timeFrom(double seconds);
[[nodiscard]] std::optional<double> readTime(const QVariant& time);

}  // namespace velmora::test
