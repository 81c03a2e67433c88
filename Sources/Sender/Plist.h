#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <expected>

namespace velmora {

/// Apple property lists as Qt's variants: dictionary = QVariantMap, array = QVariantList, string = QString,
/// data = QByteArray, boolean = bool, integer = qlonglong (qulonglong beyond it), real = double. Dates and
/// other rarities decode to an invalid variant.
///
/// libplist writes; reading is done here, because what is read comes from the network: libplist 2.2 follows
/// references without a bound, unfolds shared ones, and aborts the program at a zero byte inside a string.
namespace Plist {

/// Takes the binary and the XML form, told apart by their first bytes; blanks around XML do not matter.
/// Hostile input is refused, with the reason: bounded are the size (1 MiB), the depth and the number of
/// values.
[[nodiscard]] std::expected<QVariant, QString> decode(const QByteArray& bytes);

/// The type of each number is kept: a double becomes a real even when it is whole.
[[nodiscard]] QByteArray encodeBinary(const QVariant& value);
[[nodiscard]] QByteArray encodeXml(const QVariant& value);

}  // namespace Plist

}  // namespace velmora
