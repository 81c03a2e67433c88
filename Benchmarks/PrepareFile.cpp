// benchmark-prepare-file FILE: prepares one movie and prints the path of the file to play.
#include "Diagnostics/Log.h"
#include "Preparation/Preparer.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

using namespace velmora;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 2) return 2;
    Diagnostics::setStandardErrorFallback(false);
    const QUrl movie = QUrl::fromLocalFile(QFileInfo(QCoreApplication::arguments()[1]).absoluteFilePath());
    const auto result = Preparer().prepare(movie, false, [](const Preparer::Update&) {});
    if (!result) {
        std::fprintf(stderr, "%s\n", qPrintable(result.error().errorDescription()));
        return 1;
    }
    std::printf("%s\n%s\n", qPrintable(result->file.toLocalFile()), qPrintable(result->note));
    return 0;
}
