#include "Companions/Title.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora;

TEST(Title, isReadFromTheFileName) {
    const QString rows =
        u"Some.Movie.2019.1080p.BluRay.x264.mkv=Some Movie (2019)|Some_Movie_(2019)_[1080p].mkv=Some Movie "
        u"(2019)|"
        "Movie [2001].mkv=Movie (2001)|Blade Runner 2049 2017.mkv=Blade Runner (2049)|"
        "100%1 - (1999).mkv=100%1 (1999)|Film.2010.mkv.part=Film (2010)|Movie 2019_x.mkv=Movie (2019)|"
        "Movie2019.mkv=Movie2019|Movie 1899.mkv=Movie 1899|Movie 20190.mkv=Movie 20190|"
        "Movie 2019a.mkv=Movie 2019a|Movie 2019\u0301.mkv=Movie 2019\u0301|Movie 2019\u00B2.mkv=Movie (2019)|"
        "Film\u00A02010\u00A0x.mkv=Film\u00A0 (2010)|One\nTwo 2010.mkv=One\nTwo 2010|2019.mkv=2019|"
        "([ 2019.mkv=([ 2019|Movie.Without.Year.720p.mkv=Movie Without Year 720p|.Hidden.mkv=Hidden|.mkv=mkv|"
        "Mr. Smith=Mr  Smith"_s;
    for (const QString& row : rows.split(u'|')) {
        const QUrl movie = QUrl::fromLocalFile(u"/films/"_s + row.section(u'=', 0, 0));
        EXPECT_EQ(Title::pretty(movie), row.section(u'=', 1)) << qPrintable(row);
    }
}
