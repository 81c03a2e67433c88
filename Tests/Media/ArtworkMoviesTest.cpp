// Posters and strips of real movies by the real tools.
#include "Artwork/Poster.h"
#include "Artwork/Thumbnails.h"
#include "Media/MediaFixture.h"

#include <QFile>
#include <QImage>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

using ArtworkMovies = test::MoviesTest;

QImage posterOf(const QString& movie, double time) {
    const QUrl url = QUrl::fromLocalFile(movie);
    return Poster::captureFromSource(url, time) ? QImage(Poster::url(url).toLocalFile()) : QImage();
}

TEST_F(ArtworkMovies, HighRangePicturesKeepTheirColours) {
    struct Row {
        QString sample;
        double duration;
        bool hasStrip;  // a strip's first picture stands for some seconds of movie
    };
    for (const Row& row : {Row{u"smpte2084.mkv"_s, 6, true}, Row{u"arib-std-b67.mkv"_s, 1, false}}) {
        const QUrl movie = QUrl::fromLocalFile(add(row.sample, row.sample));
        const auto expectRed = [&](const QImage& picture) {
            const QRgb middle = picture.pixel(picture.rect().center());
            EXPECT_GT(qRed(middle), 150) << qPrintable(row.sample);
            EXPECT_LT(std::max(qGreen(middle), qBlue(middle)), 25) << qPrintable(row.sample);
        };
        EXPECT_EQ(Poster::probe(movie), (Poster::Probe{row.duration, true}));
        ASSERT_TRUE(Poster::captureFromSource(movie, std::nullopt));
        const QImage poster(Poster::url(movie).toLocalFile());
        ASSERT_EQ(poster.size(), QSize(1280, 720));
        expectRed(poster);
        const auto strip = Thumbnails::generate(movie);
        ASSERT_EQ(strip != nullptr, row.hasStrip) << qPrintable(row.sample);
        if (strip) expectRed(strip->image(0));
    }
}

TEST_F(ArtworkMovies, LongMoviesHaveAPictureEveryFewSeconds) {
    const QString movie = add(u"long.mkv"_s, u"100 %d.mkv"_s);
    const auto strip = Thumbnails::generate(QUrl::fromLocalFile(movie));
    ASSERT_NE(strip, nullptr);
    EXPECT_NEAR(strip->count(), 20, 1);
    EXPECT_FALSE(strip->image(99).isNull());
    EXPECT_TRUE(posterOf(movie, 1e6).isNull()) << "past the end";
}

TEST_F(ArtworkMovies, WhatHasNoPictureHasNoArtwork) {
    const QByteArray whole = test::contentOf(add(u"as-is.mp4"_s, u"whole.mp4"_s));
    test::writeFile(path(u"headless.mp4"_s), whole.first(whole.size() / 4));
    test::writeFile(path(u"text.mkv"_s), "hello\n");
    add(u"sound.mka"_s, u"sound.mka"_s);
    for (const char* name : {"headless.mp4", "text.mkv", "sound.mka", "vanished.mkv"}) {
        const QString movie = path(QString::fromLatin1(name));
        EXPECT_TRUE(posterOf(movie, 0).isNull()) << name;
        EXPECT_EQ(Thumbnails::generate(QUrl::fromLocalFile(movie)), nullptr) << name;
        EXPECT_EQ(Thumbnails::stored(QUrl::fromLocalFile(movie)), nullptr) << name;
    }
}

}  // namespace
}  // namespace velmora
