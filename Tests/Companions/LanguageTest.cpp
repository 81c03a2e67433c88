#include "Companions/Language.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora;

namespace {

void setUser(const QString& languages, const QString& locale) {
    for (const char* name : {"LC_ALL", "LC_MESSAGES"}) qunsetenv(name);
    qputenv("LANGUAGE", languages.toUtf8());
    qputenv("LANG", locale.toUtf8());
}

QString repeated(const QString& word, int count) {
    return QString(word + u' ').repeated(count);
}

TEST(Language, normalizesTags) {
    // Each tag with its code; none behind the sign means absent.
    const QString rows =
        u" \t ENG\t=eng|\u00A0eng=eng|eng\n=|ger=deu|pt-BR=por|en_US.UTF-8=eng|e-n=e-n|-eng=|"
        "UND=|unknown=|  =|=|xyz=xyz|Franc\u0327ais=fra|nb=nor|fa=fas|xx=|e1=|klingon="_s;
    for (const QString& row : rows.split(u'|')) {
        EXPECT_EQ(Language::normalize(row.section(u'=', 0, 0)).value_or(QString()), row.section(u'=', 1))
            << qPrintable(row);
    }
    EXPECT_FALSE(Language::normalize({}));
}

TEST(Language, prefersWhatTheEnvironmentSays) {
    const QString rows =
        u"nl_NL:en_US:en in de_DE.UTF-8=nld eng| in de_AT.UTF-8@euro=deu|nl in C=|nl in C.UTF-8=nld|"
        " in C.UTF-8=|xx::fil:C:nl in en_US=fil| in nb_NO=nob nor"_s;
    for (const QString& row : rows.split(u'|')) {
        const QStringList parts = row.section(u'=', 0, 0).split(u" in "_s);
        setUser(parts.at(0), parts.at(1));
        EXPECT_EQ(Language::preferred().join(u' '), row.section(u'=', 1)) << qPrintable(row);
    }
    qputenv("LC_MESSAGES", "fr_FR");
    EXPECT_EQ(Language::preferred(), QStringList{u"fra"_s});
    qputenv("LC_ALL", "POSIX");
    EXPECT_EQ(Language::preferred(), QStringList{});
}

TEST(Language, isReadFromFileNames) {
    const QString rows =
        u"Movie.en.forced of Movie=eng|Movie.2019.nl.en of Movie=eng|Movie.dut of Movie=nld|"
        "Movie.pol of Movie=pol|Movie.fas of Movie=|Dutch.Movie of Dutch.Movie=|"
        "DUTCH.movie.[German] of Dutch.Movie=deu|Ame\u0301lie-fr of Am\u00E9lie=fra|"
        "\u0130stanbul.tr of \u0130stanbul=tur|2_English of Movie=eng"_s;
    for (const QString& row : rows.split(u'|')) {
        const QStringList names = row.section(u'=', 0, 0).split(u" of "_s);
        EXPECT_EQ(Language::fromFilename(names.at(0), names.at(1)).value_or(QString()), row.section(u'=', 1))
            << qPrintable(row);
    }
}

TEST(Language, isDetectedFromText) {
    // A word, how often it comes, how many words that mean nothing follow, and the language.
    const QString rows =
        u"the 50 0 =|THE 51 0 =eng|und 7 48 =deu|und 7 49 =|and,1 7 45 =eng|don't 7 45 =eng|"
        "un\u0332 40 20 =|esta\u0301 40 20 =spa|the 751 9000 =eng"_s;
    for (const QString& row : rows.split(u'|')) {
        const QStringList parts = row.split(u' ');
        const QString text =
            repeated(parts.at(0), parts.at(1).toInt()) + repeated(u"x"_s, parts.at(2).toInt());
        EXPECT_EQ(Language::detect(text).value_or(QString()), row.section(u'=', 1)) << qPrintable(row);
    }
    EXPECT_FALSE(Language::detect(repeated(u"x"_s, 6000) + repeated(u"the"_s, 4000)));
    EXPECT_EQ(Language::detect(repeated(u"\U00010400\U00010401"_s, 44) + repeated(u"het"_s, 7)), u"nld"_s);
}

TEST(Language, isNamedInTheUsersLanguage) {
    const QString rows =
        u"nl_NL.UTF-8 eng=Engels|nl_NL.UTF-8 xyz=|nl_NL.UTF-8 e-n=|C nld=Dutch|C vai=Vai|ka_GE hmo="_s;
    for (const QString& row : rows.split(u'|')) {
        setUser({}, row.section(u' ', 0, 0));
        const QString code = row.section(u' ', 1).section(u'=', 0, 0);
        EXPECT_EQ(Language::displayName(code).value_or(QString()), row.section(u'=', 1)) << qPrintable(row);
    }
}

}  // namespace
