#include "Interface/Application/LaunchOptions.h"

#include <QDir>
#include <QFileInfo>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// A path, or a `file:` URL as desktops pass it. A file whose name looks like a URL is still a file.
QUrl location(const QString& argument, const QString& workingFolder) {
    const QString path = QDir::cleanPath(QDir(workingFolder).absoluteFilePath(argument));
    if (const QUrl url(argument, QUrl::StrictMode); url.isLocalFile() && !QFileInfo::exists(path))
        return QUrl::fromLocalFile(QDir::cleanPath(url.toLocalFile()));
    return QUrl::fromLocalFile(path);
}

std::expected<void, QString> readOption(const QString& argument, LaunchOptions& options) {
    if (argument == u"--help" || argument == u"-h")
        options.action = LaunchOptions::Action::help;
    else if (argument == u"--version")
        options.action = LaunchOptions::Action::version;
    else if (argument == u"--gapplication-service")
        options.action = LaunchOptions::Action::serve;
    else if (argument == u"--new-window")
        options.request.action = LaunchRequest::Action::newWindow;
    else if (argument == u"--choose")
        options.request.action = LaunchRequest::Action::chooseMovie;
    else
        return std::unexpected(u"there is no option %1"_s.arg(argument));
    return {};
}

}  // namespace

std::expected<LaunchOptions, QString> LaunchOptions::parse(const QStringList& arguments,
                                                           const QString& workingFolder) {
    LaunchOptions options;
    bool optionsEnded = false;
    for (const QString& argument : arguments) {
        if (argument.isEmpty()) return std::unexpected(u"a movie's name is empty"_s);
        if (!optionsEnded && argument == u"--")
            optionsEnded = true;
        else if (optionsEnded || !argument.startsWith(u'-'))
            options.request.movies << location(argument, workingFolder);
        else if (const auto read = readOption(argument, options); !read)
            return std::unexpected(read.error());
    }
    if (!options.request.movies.isEmpty()) options.request.action = LaunchRequest::Action::open;
    return options;
}

QString LaunchOptions::help() {
    return uR"(Puts movies onto televisions over AirPlay.

  velmora [--new-window | --choose] [MOVIE...]

MOVIE is a movie file, or a folder: the largest movie in it. Each gets a
window of its own. When Velmora is running already, it opens them there.

  --new-window  open another window, for a second television
  --choose      ask for the movie
  --help        show this and leave
  --version     show the version and leave

For the terminal there is velmora-cast.
)"_s;
}

}  // namespace velmora
