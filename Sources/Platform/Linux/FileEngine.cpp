#include "Platform/Linux/FileEngine.h"

#include "Preparation/Media.h"
#include "Preparation/Tools.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Player)
};

MediaInfo probe(const QString& file, const std::stop_token& stop) {
    const auto& ffprobe = Tools::ffprobe();
    if (!ffprobe) return {};
    return MediaProbe::probe(QUrl::fromLocalFile(file), *ffprobe, stop).value_or(MediaInfo());
}

/// The first default track of its kind is on; of the sounds, the first one where there is none.
QList<LocalEngine::Track> tracksOf(MediaGroup::Kind kind, const QList<MediaInfo::Stream>& streams) {
    QList<LocalEngine::Track> tracks;
    for (const MediaInfo::Stream& stream : streams)
        tracks.append({.kind = kind,
                       .number = static_cast<int>(tracks.size()) + 1,
                       .title = stream.title.value_or(QString()),
                       .language = stream.language.value_or(QString()),
                       .channels = stream.channels,
                       .isForced = stream.isForced});
    const auto first = std::ranges::find_if(streams, &MediaInfo::Stream::isDefault) - streams.begin();
    if (first < streams.size())
        tracks[first].isSelected = true;
    else if (kind == MediaGroup::Kind::audible && !tracks.isEmpty())
        tracks.first().isSelected = true;
    return tracks;
}

}  // namespace

LocalEngine::Maker FileEngine::maker() {
    return
        [known = std::make_shared<Known>()] { return std::unique_ptr<LocalEngine>(new FileEngine(known)); };
}

FileEngine::~FileEngine() {
    // Before the object is taken apart: the thread posts to it until it ends.
    thread_ = {};
}

void FileEngine::load(const QString& file) {
    unload();
    stage_ = Stage::loading;
    isPaused_ = true;
    const auto tell = [this](const auto& news) {
        QMetaObject::invokeMethod(this, news, Qt::QueuedConnection);
    };
    const QFileInfo entry(file);
    const quint64 number = number_;
    if (!entry.isReadable()) return tell([this, number] { takeMissing(number); });
    const QDateTime modified = entry.lastModified();
    if (known_->file == file && known_->modified == modified)
        return tell([this, number] { takeLoaded(number, *known_); });
    thread_ = std::jthread([this, tell, number, file, modified](const std::stop_token& stop) {
        const MediaInfo info = probe(file, stop);
        const Known probed{file, modified, info.duration,
                           tracksOf(MediaGroup::Kind::audible, info.audio()) +
                               tracksOf(MediaGroup::Kind::legible, info.subtitles())};
        tell([this, number, probed] { takeProbed(number, probed); });
    });
}

void FileEngine::unload() {
    ++number_;
    stage_ = Stage::empty;
    position_ = 0;
    duration_.reset();
    tracks_.clear();
    answer(false);
}

void FileEngine::takeProbed(quint64 number, const Known& file) {
    if (number == number_) *known_ = file;
    takeLoaded(number, file);
}

void FileEngine::takeLoaded(quint64 number, const Known& file) {
    if (number != number_) return;
    // What does not tell its length may play all the same.
    if (file.duration > 0) duration_ = file.duration;
    tracks_ = file.tracks;
    stage_ = Stage::ready;
    answer(true);
    Q_EMIT ready();
}

void FileEngine::takeMissing(quint64 number) {
    if (number != number_) return;
    unload();
    Q_EMIT failed(Texts::tr("The movie cannot be opened."));
}

void FileEngine::seek(double seconds, Seek /*how*/, Sought done) {
    answer(false);
    sought_ = std::move(done);
    if (stage_ == Stage::empty) return answer(false);
    position_ = std::max(seconds, 0.0);
    if (stage_ == Stage::ready) answer(true);
}

void FileEngine::answer(bool finished) {
    const Sought done = std::exchange(sought_, {});
    if (done) QMetaObject::invokeMethod(this, [done, finished] { done(finished); }, Qt::QueuedConnection);
}

std::optional<double> FileEngine::position() const {
    return stage_ == Stage::empty ? std::nullopt : std::optional(position_);
}

}  // namespace velmora
