#include "Companions/Language.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace velmora;

namespace {

using Answer = std::optional<QString>;

/// Sets the user's languages for the time of a test.
class Environment {
  public:
    Environment(const char* languages, const char* locale) {
        for (const char* name : {"LC_ALL", "LC_MESSAGES"}) qunsetenv(name);
        qputenv("LANGUAGE", languages);
        qputenv("LANG", locale);
    }
    ~Environment() {
        qunsetenv("LANGUAGE");
        qunsetenv("LANG");
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
};

QString repeated(const QString& word, int count) {
    return QString(word + u' ').repeated(count);
}

TEST(Language, normalizesTags) {
    const std::vector<std::pair<Answer, Answer>> rows = {
        {{}, {}},
        {u" \t ENG\t"_s, u"eng"_s},
        {u"\u00A0eng"_s, u"eng"_s},
        {u"eng\n"_s, {}},
        {u"ger"_s, u"deu"_s},
        {u"pt-BR"_s, u"por"_s},
        {u"en_US.UTF-8"_s, u"eng"_s},
        {u"e-n"_s, u"e-n"_s},
        {u"-eng"_s, {}},
        {u"UND"_s, {}},
        {u"unknown"_s, {}},
        {u"  "_s, {}},
        {u"xyz"_s, u"xyz"_s},
        {u"Franc\u0327ais"_s, u"fra"_s},
        {u"nb"_s, u"nor"_s},
        {u"fa"_s, u"fas"_s},
        {u"xx"_s, {}},
        {u"e1"_s, {}},
        {u"klingon"_s, {}},
    };
    for (const auto& [tag, code] : rows)
        EXPECT_EQ(Language::normalize(tag), code) << qPrintable(tag.value_or(u"-"_s));
}

TEST(Language, prefersWhatTheEnvironmentSays) {
    struct Row {
        const char* languages;
        const char* locale;
        QStringList codes;
    };
    const std::vector<Row> rows = {
        {"nl_NL:en_US:en", "de_DE.UTF-8", {u"nld"_s, u"eng"_s}},
        {"", "de_AT.UTF-8@euro", {u"deu"_s}},
        {"nl", "C", {}},
        {"nl", "C.UTF-8", {u"nld"_s}},
        {"", "C.UTF-8", {}},
        {"xx::fil:C:nl", "en_US", {u"fil"_s}},
        {"", "nb_NO", {u"nob"_s, u"nor"_s}},
    };
    for (const Row& row : rows) {
        const Environment environment(row.languages, row.locale);
        EXPECT_EQ(Language::preferred(), row.codes) << row.languages << " in " << row.locale;
    }
    const Environment environment("", "nl_NL");
    qputenv("LC_MESSAGES", "fr_FR");
    EXPECT_EQ(Language::preferred(), QStringList{u"fra"_s});
    qputenv("LC_ALL", "POSIX");
    EXPECT_EQ(Language::preferred(), QStringList{});
    qunsetenv("LC_ALL");
    qunsetenv("LC_MESSAGES");
}

TEST(Language, isReadFromFileNames) {
    struct Row {
        QString name;
        QString movie;
        Answer code;
    };
    const std::vector<Row> rows = {
        {u"Movie.en.forced"_s, u"Movie"_s, u"eng"_s},
        {u"Movie.2019.nl.en"_s, u"Movie"_s, u"eng"_s},
        {u"Movie.dut"_s, u"Movie"_s, u"nld"_s},
        {u"Movie.pol"_s, u"Movie"_s, u"pol"_s},
        {u"Movie.fas"_s, u"Movie"_s, {}},
        {u"Movie.abc"_s, u"Movie"_s, {}},
        {u"Dutch.Movie"_s, u"Dutch.Movie"_s, {}},
        {u"DUTCH.movie.[German]"_s, u"Dutch.Movie"_s, u"deu"_s},
        {u"Ame\u0301lie-fr"_s, u"Am\u00E9lie"_s, u"fra"_s},
        {u"\u0130stanbul.tr"_s, u"\u0130stanbul"_s, u"tur"_s},
        {u"2_English"_s, u"Movie"_s, u"eng"_s},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Language::fromFilename(row.name, row.movie), row.code) << qPrintable(row.name);
    }
}

TEST(Language, isDetectedFromText) {
    const std::vector<std::pair<QString, Answer>> rows = {
        {repeated(u"the"_s, 50), {}},
        {repeated(u"THE"_s, 51), u"eng"_s},
        {repeated(u"und"_s, 6) + repeated(u"x"_s, 45), {}},
        {repeated(u"und"_s, 7) + repeated(u"x"_s, 48), u"deu"_s},
        {repeated(u"und"_s, 7) + repeated(u"x"_s, 49), {}},
        {repeated(u"and,1"_s, 7) + repeated(u"x"_s, 45), u"eng"_s},
        {repeated(u"don't"_s, 7) + repeated(u"x"_s, 44), u"eng"_s},
        {repeated(u"le\u0301"_s, 40) + repeated(u"x"_s, 20), {}},
        {repeated(u"esta\u0301"_s, 40) + repeated(u"x"_s, 20), u"spa"_s},
        {repeated(u"x"_s, 6000) + repeated(u"the"_s, 4000), {}},
        {repeated(u"the"_s, 751) + repeated(u"x"_s, 9000), u"eng"_s},
        {repeated(u"\U00010400\U00010401"_s, 44) + repeated(u"het"_s, 7), u"nld"_s},
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        EXPECT_EQ(Language::detect(rows[row].first), rows[row].second) << "row " << row;
    }
}

TEST(Language, isNamedInTheUsersLanguage) {
    const Environment dutch("", "nl_NL.UTF-8");
    EXPECT_EQ(Language::displayName(u"eng"_s), u"Engels"_s);
    EXPECT_EQ(Language::displayName(u"xyz"_s), Answer());
    EXPECT_EQ(Language::displayName(u"e-n"_s), Answer());
    const Environment none("", "C");
    EXPECT_EQ(Language::displayName(u"nld"_s), u"Dutch"_s);
    EXPECT_EQ(Language::displayName(u"vai"_s), u"Vai"_s);
    const Environment georgian("ka", "ka_GE");
    EXPECT_EQ(Language::displayName(u"hmo"_s), Answer());
}

}  // namespace
