#include "Platform/Linux/Graphics.h"

#include <QDir>
#include <QFile>

namespace velmora::Graphics {

using namespace Qt::StringLiterals;

bool hasNvidia() {
    return QFile::exists(u"/dev/nvidia0"_s);
}

bool hasProcessor() {
    // The last one is how Windows lends its own to a Linux that it runs.
    return hasNvidia() || !QDir(u"/dev/dri"_s).entryList({u"renderD*"_s}, QDir::System).isEmpty() ||
           QFile::exists(u"/dev/dxg"_s);
}

}  // namespace velmora::Graphics
