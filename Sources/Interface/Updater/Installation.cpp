#include "Interface/Updater/Installation.h"

#include <QCoreApplication>
#include <QDir>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Updater)
};

}  // namespace

QString installationKeeper(const QString& programFile) {
    const QString path = QDir::cleanPath(programFile) + u'/';
    const auto isUnder = [&path](QLatin1StringView folder) { return path.startsWith(folder); };
    if (isUnder("/app/"_L1)) return u"Flatpak"_s;
    if (isUnder("/snap/"_L1)) return u"Snap"_s;
    // The two folders under /usr that packages leave to the administrator are kept by nobody.
    if (isUnder("/usr/local/"_L1) || isUnder("/opt/"_L1)) return {};
    if (isUnder("/usr/"_L1) || isUnder("/bin/"_L1) || isUnder("/nix/store/"_L1) || isUnder("/gnu/store/"_L1))
        return Texts::tr("your system's package manager");
    return {};
}

}  // namespace velmora
