#include "Preparation/PartialFile.h"

#include <QFile>

#include <cerrno>
#include <cstdio>

namespace velmora {

PartialFile::PartialFile(const QUrl& prepared)
    : url_(QUrl::fromLocalFile(prepared.toLocalFile() + QLatin1StringView(".part"))) {
    remove();
}

void PartialFile::remove() const {
    if (!url_.isEmpty()) QFile::remove(url_.toLocalFile());
}

std::expected<void, PrepareError> PartialFile::moveTo(const QUrl& prepared) {
    // rename() replaces an older prepared file in one step: at every moment there is a whole file under the
    // name, and a player that still reads the older one keeps reading it.
    if (std::rename(QFile::encodeName(url_.toLocalFile()).constData(),
                    QFile::encodeName(prepared.toLocalFile()).constData()) != 0) {
        return std::unexpected(PrepareError::system(std::error_code(errno, std::system_category())));
    }
    url_.clear();
    return {};
}

}  // namespace velmora
