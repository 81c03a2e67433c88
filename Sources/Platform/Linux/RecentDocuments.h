#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

#include <optional>

/// The list of recent documents that all of a user's programs share. Any thread.
namespace velmora::RecentDocuments {

/// Where it is: `recently-used.xbel` in the user's data folder.
[[nodiscard]] QString path();

/// Puts the file into the list, or notes that it was opened again. Everything else in the list stays. False
/// when it cannot be read or written, or is not such a list: it is left alone then.
bool add(const QUrl& file);

/// `list` (empty for a new one) with the file in it; absent when that is no such list.
[[nodiscard]] std::optional<QByteArray> with(const QUrl& file, const QByteArray& list, const QDateTime& now);

}  // namespace velmora::RecentDocuments
