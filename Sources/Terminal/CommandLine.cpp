#include "Terminal/CommandLine.h"

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// Reads the arguments one by one; what it has read stands in the members.
class Parser {
  public:
    explicit Parser(const QStringList& arguments) : rest_(arguments) {}

    std::expected<CommandLine, QString> parse() {
        bool optionsEnded = false;
        while (!rest_.isEmpty()) {
            const QString argument = rest_.takeFirst();
            if (!optionsEnded && argument == u"--")
                optionsEnded = true;
            else if (optionsEnded || !argument.startsWith(u'-'))
                line_.movies << argument;
            else if (const auto read = readOption(argument); !read)
                return std::unexpected(read.error());
        }
        return check();
    }

  private:
    std::expected<void, QString> readOption(const QString& argument) {
        if (argument == u"--help")
            line_.action = CommandLine::Action::help;
        else if (argument == u"--version")
            line_.action = CommandLine::Action::version;
        else if (argument == u"--prepare-only")
            line_.action = CommandLine::Action::prepareOnly;
        else if (argument == u"--list")
            line_.action = CommandLine::Action::list;
        else if (argument == u"--start-over")
            line_.startOver = true;
        else if (argument == u"--re-encode")
            line_.reEncode = true;
        else if (argument == u"--to" || argument.startsWith(u"--to="))
            return readTelevision(argument);
        else if (argument == u"--forget" || argument.startsWith(u"--forget=")) {
            line_.action = CommandLine::Action::forget;
            return readTelevision(argument);
        } else
            return std::unexpected(u"there is no option %1"_s.arg(argument));
        return {};
    }

    std::expected<void, QString> readTelevision(const QString& argument) {
        const qsizetype equals = argument.indexOf(u'=');
        const bool isApart = equals < 0;
        if (isApart && (rest_.isEmpty() || rest_.first().startsWith(u'-')))
            return std::unexpected(u"%1 wants a television after it"_s.arg(argument));
        line_.television = (isApart ? rest_.takeFirst() : argument.sliced(equals + 1)).trimmed();
        if (line_.television.isEmpty()) return std::unexpected(u"the television's name is empty"_s);
        return {};
    }

    std::expected<CommandLine, QString> check() {
        using enum CommandLine::Action;
        switch (line_.action) {
            case cast:
                return checkCasting();
            case prepareOnly:
                return checkPreparing();
            case list:
            case forget:
                if (!line_.movies.isEmpty())
                    return std::unexpected(
                        u"no movie is played here, so leave “%1” out"_s.arg(line_.movies.first()));
                return line_;
            default:
                return line_;
        }
    }

    std::expected<void, QString> checkMovies() const {
        if (line_.movies.isEmpty()) return std::unexpected(u"which movie?"_s);
        if (line_.movies.contains(QString())) return std::unexpected(u"a movie's name is empty"_s);
        return {};
    }

    std::expected<CommandLine, QString> checkPreparing() const {
        if (const auto movies = checkMovies(); !movies) return std::unexpected(movies.error());
        if (!line_.television.isEmpty())
            return std::unexpected(u"--prepare-only plays nothing, so leave --to out"_s);
        if (line_.startOver)
            return std::unexpected(u"--prepare-only plays nothing, so leave --start-over out"_s);
        return line_;
    }

    std::expected<CommandLine, QString> checkCasting() const {
        if (const auto movies = checkMovies(); !movies) return std::unexpected(movies.error());
        if (line_.movies.size() > 1) return std::unexpected(u"one movie at a time"_s);
        if (line_.television.isEmpty()) {
            return std::unexpected(
                u"on which television? Name it with --to, as in --to \"Living Room\" or --to 192.168.1.20; "
                "--list shows those on the network"_s);
        }
        return line_;
    }

    QStringList rest_;
    CommandLine line_;
};

}  // namespace

std::expected<CommandLine, QString> CommandLine::parse(const QStringList& arguments) {
    return Parser(arguments).parse();
}

QString CommandLine::help() {
    return uR"(Puts a movie onto a television over AirPlay.

  velmora-cast --to TELEVISION [--start-over] [--re-encode] MOVIE
  velmora-cast --prepare-only [--re-encode] MOVIE...
  velmora-cast --list
  velmora-cast --forget TELEVISION

MOVIE is a movie file, or a folder: the largest movie in it. Subtitle files
beside it come along. TELEVISION is a name that --list shows, or HOST or
HOST:PORT (port 7000 when left out; an IPv6 address with a port stands in
brackets).

  --to TELEVISION   where to play
  --start-over      play from the beginning, not from where you stopped
  --re-encode       re-encode the video even where repacking would do
  --prepare-only    only prepare; print the path of each file to play
  --list            print the televisions on the network: name, address, model
  --forget TELEVISION  forget its password, its pairing and what worked on it
  --help            show this and leave
  --version         show the version and leave

While a movie plays: space pauses and resumes, left and right skip 10 seconds,
down and up a minute, a goes to the next sound track, s to the next subtitles,
q stops and quits, Ctrl-C too.

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted.
)"_s;
}

}  // namespace velmora
