#include "Terminal/PreparationJob.h"

#include "Preparation/Tools.h"

namespace velmora {

namespace {

double durationOf(const QUrl& movie, const std::stop_token& stop) {
    if (!Tools::ffprobe()) return 0;
    const auto info = MediaProbe::probe(movie, *Tools::ffprobe(), stop);
    return info ? info->duration : 0;
}

PreparationJob::Outcome prepare(const QUrl& movie, bool reEncode, const Preparer::UpdateCallback& onUpdate,
                                const std::stop_token& stop) {
    const auto result = Preparer().prepare(movie, reEncode, onUpdate, stop);
    if (!result) return std::unexpected(result.error());
    return PreparedMovie{*result, durationOf(result->file, stop)};
}

}  // namespace

PreparationJob::~PreparationJob() {
    // Before the object is taken apart: the thread posts to it until it ends.
    thread_ = {};
}

void PreparationJob::start(const QUrl& movie, bool reEncode) {
    thread_ = std::jthread([this, movie, reEncode](const std::stop_token& stop) {
        const auto onUpdate = [this](const Preparer::Update& update) { post(update); };
        const Outcome outcome = prepare(movie, reEncode, onUpdate, stop);
        const auto finish = [this, outcome] {
            outcome_ = outcome;
            Q_EMIT finished();
        };
        QMetaObject::invokeMethod(this, finish, Qt::QueuedConnection);
    });
}

void PreparationJob::post(const Preparer::Update& update) {
    QMetaObject::invokeMethod(this, [this, update] { Q_EMIT updated(update); }, Qt::QueuedConnection);
}

}  // namespace velmora
