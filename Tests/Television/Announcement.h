#pragma once

#include "Television/Options.h"

#include <QByteArray>
#include <QList>

/// What a television tells of itself, as fits its options.
namespace velmora::test {

/// A hardware address that follows from the name.
[[nodiscard]] QString deviceIdentifier(const TelevisionOptions& options);
[[nodiscard]] QString sourceVersion(const TelevisionOptions& options);
[[nodiscard]] quint64 features(const TelevisionOptions& options);
[[nodiscard]] quint64 statusFlags(const TelevisionOptions& options);

/// The strings of the TXT record beside `_airplay._tcp`.
[[nodiscard]] QList<QByteArray> announcement(const TelevisionOptions& options);

}  // namespace velmora::test
