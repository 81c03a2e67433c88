#include "Platform/Linux/FileEngine.h"

#include "Preparation/Media.h"
#include "Preparation/Tools.h"

#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

double durationOf(const QString& file, const std::stop_token& stop) {
    if (!Tools::ffprobe()) return 0;
    const auto info = MediaProbe::probe(QUrl::fromLocalFile(file), *Tools::ffprobe(), stop);
    return info ? info->duration : 0;
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
    const auto tell = [this](auto news) { QMetaObject::invokeMethod(this, news, Qt::QueuedConnection); };
    const QFileInfo entry(file);
    const quint64 number = number_;
    if (!entry.isReadable()) return tell([this, number] { takeMissing(number); });
    const QDateTime modified = entry.lastModified();
    if (known_->file == file && known_->modified == modified)
        return tell([this, number] { takeLoaded(number, known_->duration); });
    thread_ = std::jthread([this, tell, number, file, modified](const std::stop_token& stop) {
        const Known probed{file, modified, durationOf(file, stop)};
        tell([this, number, probed] { takeProbed(number, probed); });
    });
}

void FileEngine::unload() {
    ++number_;
    stage_ = Stage::empty;
    position_ = 0;
    duration_.reset();
    answer(false);
}

void FileEngine::takeProbed(quint64 number, const Known& file) {
    if (number == number_) *known_ = file;
    takeLoaded(number, file.duration);
}

void FileEngine::takeLoaded(quint64 number, double duration) {
    if (number != number_) return;
    // What does not tell its length may play all the same.
    if (duration > 0) duration_ = duration;
    stage_ = Stage::ready;
    answer(true);
    Q_EMIT ready();
}

void FileEngine::takeMissing(quint64 number) {
    if (number != number_) return;
    unload();
    Q_EMIT failed(u"The movie cannot be opened."_s);
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
