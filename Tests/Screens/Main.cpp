// velmora-screens: the program itself in all its states, as pictures.
#include "Screens/Stories.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace velmora::test;

namespace {

struct Round {
    Look look;
    QStringList stories{};  ///< all without
};

QList<Round> allRounds() {
    const QStringList some{u"tools"_s, u"failed"_s, u"playing"_s, u"code"_s, u"twelve"_s};
    return {
        {{.name = u"dark"_s}},
        {{.name = u"light"_s, .isDark = false}},
        {{.name = u"dark-twice"_s, .scale = 2}},
        {{.name = u"light-twice"_s, .isDark = false, .scale = 2}},
        {{.name = u"small"_s, .size = {520, 400}}, some},
        {{.name = u"large"_s, .size = {1280, 800}}, {u"nothing"_s, u"playing"_s}},
        {{.name = u"mirrored"_s, .arguments = {u"-reverse"_s}}, {u"preparing"_s, u"playing"_s}},
    };
}

/// Whether all of it could be pictured.
bool play(const Round& round, const QStringList& wanted, Film& film, const QDir& folder) {
    Stage stage(round.look, film, folder);
    bool isWhole = true;
    for (const Story& story : allStories()) {
        if (!round.stories.isEmpty() && !round.stories.contains(story.name)) continue;
        if (!wanted.isEmpty() && !wanted.contains(story.name)) continue;
        std::printf("%s: %s\n", qPrintable(round.look.name), qPrintable(story.name));
        std::fflush(stdout);
        story.play(stage);
        const QString problem = stage.startOver();
        if (problem.isEmpty()) continue;
        isWhole = false;
        std::fprintf(stderr, "%s, %s: cannot reach %s\n", qPrintable(round.look.name), qPrintable(story.name),
                     qPrintable(problem));
    }
    return isWhole;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Saves pictures of velmora in all its states."_s);
    parser.addHelpOption();
    parser.addPositionalArgument(u"folder"_s, u"where to save them"_s);
    parser.addPositionalArgument(u"names"_s, u"rounds and stories wanted; all without"_s, u"[names...]"_s);
    parser.process(application);
    QStringList names = parser.positionalArguments();
    if (names.isEmpty()) parser.showHelp(2);
    const QDir folder(QDir(names.takeFirst()).absolutePath());
    if (const QString missing = Desk::whatIsMissing(); !missing.isEmpty()) {
        std::fprintf(stderr, "There is no %s.\n", qPrintable(missing));
        return 1;
    }
    QStringList rounds;
    for (const Round& round : allRounds())
        if (names.removeAll(round.look.name) > 0) rounds << round.look.name;
    Film film(folder.filePath(u"movies"_s));
    bool isWhole = true;
    for (const Round& round : allRounds())
        if (rounds.isEmpty() || rounds.contains(round.look.name))
            isWhole = play(round, names, film, folder) && isWhole;
    return isWhole ? 0 : 1;
}
