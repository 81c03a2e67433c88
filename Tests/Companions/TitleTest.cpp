#include "Companions/Title.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace velmora;

TEST(Title, isReadFromTheFileName) {
    const std::vector<std::pair<QString, QString>> rows = {
        {u"Some.Movie.2019.1080p.BluRay.x264.mkv"_s, u"Some Movie (2019)"_s},
        {u"Some_Movie_(2019)_[1080p].mkv"_s, u"Some Movie (2019)"_s},
        {u"Movie [2001].mkv"_s, u"Movie (2001)"_s},
        {u"Blade Runner 2049 2017.mkv"_s, u"Blade Runner (2049)"_s},
        {u"100%1 - (1999).mkv"_s, u"100%1 (1999)"_s},
        {u"Movie2019.mkv"_s, u"Movie2019"_s},
        {u"Movie 1899.mkv"_s, u"Movie 1899"_s},
        {u"Movie 20190.mkv"_s, u"Movie 20190"_s},
        {u"Movie 2019a.mkv"_s, u"Movie 2019a"_s},
        {u"Movie 2019_x.mkv"_s, u"Movie (2019)"_s},
        {u"Movie 2019\u0301.mkv"_s, u"Movie 2019\u0301"_s},
        {u"Movie 2019\u00B2.mkv"_s, u"Movie (2019)"_s},
        {u"Film\u00A02010\u00A0x.mkv"_s, u"Film\u00A0 (2010)"_s},
        {u"One\nTwo 2010.mkv"_s, u"One\nTwo 2010"_s},
        {u"2019.mkv"_s, u"2019"_s},
        {u"([ 2019.mkv"_s, u"([ 2019"_s},
        {u"Movie.Without.Year.720p.mkv"_s, u"Movie Without Year 720p"_s},
        {u"Film.2010.mkv.part"_s, u"Film (2010)"_s},
        {u".Hidden.mkv"_s, u"Hidden"_s},
        {u".mkv"_s, u"mkv"_s},
        {u"Mr. Smith"_s, u"Mr  Smith"_s},
    };
    for (const auto& [name, title] : rows) {
        EXPECT_EQ(Title::pretty(QUrl::fromLocalFile(u"/films/"_s + name)), title) << qPrintable(name);
    }
}
