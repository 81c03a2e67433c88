#include "Interface/Translations/Translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

bool install(QCoreApplication& application, const QLocale& locale, const QString& name,
             const QString& folder) {
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(locale, name, u"_"_s, folder)) return false;
    translator->setParent(&application);
    return QCoreApplication::installTranslator(translator.release());
}

}  // namespace

void speak(QCoreApplication& application, const QStringList& languages, const QString& folder) {
    for (const QString& language : languages) {
        const QLocale locale(language);
        if (locale.language() == QLocale::English || locale.language() == QLocale::C) return;
        if (!install(application, locale, u"velmora"_s, folder)) continue;
        // The toolkit's own words, for its dialogs and for the direction of writing; only in our language.
        for (const auto& part : {u"qtbase"_s, u"qtdeclarative"_s})
            install(application, locale, part, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
        return;
    }
}

}  // namespace velmora
