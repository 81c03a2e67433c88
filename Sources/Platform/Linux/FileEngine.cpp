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

FileEngine::~FileEngine() {
    // Before the object is taken apart: the thread posts to it until it ends.
    thread_ = {};
}

void FileEngine::load(const QString& file) {
    unload();
    stage_ = Stage::loading;
    isPaused_ = true;
    thread_ = std::jthread([this, file, number = file_](const std::stop_token& stop) {
        const bool isThere = QFileInfo(file).isReadable();
        const double duration = isThere ? durationOf(file, stop) : 0;
        const auto tell = [this, number, isThere, duration] { takeLoaded(number, isThere, duration); };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    });
}

void FileEngine::unload() {
    ++file_;
    stage_ = Stage::empty;
    position_ = 0;
    duration_.reset();
    answer(false);
}

void FileEngine::takeLoaded(quint64 file, bool isThere, double duration) {
    if (file != file_) return;
    if (!isThere) {
        unload();
        Q_EMIT failed(u"The movie cannot be opened."_s);
        return;
    }
    // What does not tell its length may play all the same.
    if (duration > 0) duration_ = duration;
    stage_ = Stage::ready;
    answer(true);
    Q_EMIT ready();
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
