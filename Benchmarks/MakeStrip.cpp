// benchmark-make-strip FILE: makes one movie's strip of thumbnails anew and prints how many there are.
#include "Artwork/Thumbnails.h"
#include "Diagnostics/Log.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

using namespace velmora;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 2) return 2;
    Diagnostics::setStandardErrorFallback(false);
    const QUrl movie = QUrl::fromLocalFile(QFileInfo(QCoreApplication::arguments()[1]).absoluteFilePath());
    const auto strip = Thumbnails::generate(movie);
    if (!strip) return 1;
    std::printf("%d\n", strip->count());
    return 0;
}
