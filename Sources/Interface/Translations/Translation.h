#pragma once

#include <QString>
#include <QStringList>

class QCoreApplication;

namespace velmora {

/// Lets the application speak the first of the languages (as `QLocale::uiLanguages` gives them) that it
/// knows; `folder` holds the translations. English needs none. Main thread, before the first window.
void speak(QCoreApplication& application, const QStringList& languages, const QString& folder);

}  // namespace velmora
