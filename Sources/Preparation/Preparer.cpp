#include "Preparation/Preparer.h"

#include "Diagnostics/Log.h"
#include "Preparation/Conversion.h"
#include "Preparation/OutputLock.h"
#include "Preparation/PartialFile.h"
#include "Preparation/Tools.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace velmora {
namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Preparer)
};

using namespace Qt::StringLiterals;
using Case = PrepareError::Case;
using Outcome = std::expected<Preparer::Result, PrepareError>;

Outcome failure(Case which) {
    return std::unexpected(PrepareError{which});
}

bool encodesVideo(const Plan& plan) {
    return std::holds_alternative<Plan::VideoEncode>(plan.video);
}

bool encodesAudio(const Plan& plan) {
    return plan.audio && std::holds_alternative<Plan::AudioEncode>(*plan.audio);
}

/// Only a plan that encodes video asks what this machine encodes with: finding out takes trial runs.
std::expected<Plan, PrepareError> makePlan(const MediaInfo& info, const QList<Sidecar>& sidecars,
                                           bool forceTranscode, const std::stop_token& stop) {
    std::expected<Plan, PrepareError> plan = Plan::make(info, sidecars, forceTranscode, {});
    if (plan && encodesVideo(*plan)) plan->encoder = VideoEncoder::available(stop);
    return plan;
}

bool playsAsIs(const Plan& plan) {
    const auto* copy = std::get_if<Plan::VideoCopy>(&plan.video);
    return plan.containerIsApple && copy && !copy->retag && !encodesAudio(plan) && plan.sidecars.isEmpty();
}

QString stageText(const Plan& plan) {
    if (encodesVideo(plan)) {
        const bool tenBit = std::get<Plan::VideoEncode>(plan.video).tenBit;
        return plan.encoder.isHardware(tenBit) ? Texts::tr("Re-encoding video for Apple TV (hardware)")
                                               : Texts::tr("Re-encoding video for Apple TV (software)");
    }
    return encodesAudio(plan) ? Texts::tr("Repacking, re-encoding audio only")
                              : Texts::tr("Repacking for Apple TV, no re-encode");
}

QString shownStage(const Plan& plan) {
    const QString stage = stageText(plan);
    if (plan.skippedBitmapSubtitles < 1) return stage;
    return Texts::tr("%1 · %n image subtitle track(s) left out", nullptr, plan.skippedBitmapSubtitles)
        .arg(stage);
}

/// The way from a plan to a prepared file.
class Production {
  public:
    Production(QUrl source, const MediaInfo& info, Plan plan, bool forceTranscode,
               const Preparer::UpdateCallback& onUpdate, std::stop_token stop)
        : source_(std::move(source)),
          info_(info),
          plan_(std::move(plan)),
          force_(forceTranscode),
          onUpdate_(onUpdate),
          stop_(std::move(stop)),
          prepared_(Preparer::Output::location(source_)),
          // Taken before ffmpeg reads anything: what changes from now on makes the result stale.
          fingerprint_(Preparer::Output::fingerprint(source_, plan_.sidecars, plan_)) {}

    [[nodiscard]] Outcome run() {
        if (mayReuse()) return reuse();
        const auto lock =
            OutputLock::acquire(Preparer::Output::lockFile(source_), stop_, [this] { reportWaiting(); });
        if (!lock) return failure(Case::cancelled);
        // Whoever had the lock may have made just this file, or have been about to.
        prepared_ = Preparer::Output::location(source_);
        if (mayReuse()) return reuse();
        return produce();
    }

  private:
    [[nodiscard]] bool mayReuse() const {
        return !force_ && Preparer::Output::isFresh(prepared_, fingerprint_);
    }

    [[nodiscard]] Outcome reuse() const {
        return Preparer::Result{prepared_, Texts::tr("Prepared earlier, reusing"), plan_.subtitleTitles()};
    }

    void reportWaiting() const {
        onUpdate_({{}, Texts::tr("Waiting for another Velmora to finish preparing this movie…"), {}});
    }

    [[nodiscard]] Outcome produce() const {
        // The leftover goes first: it may be what fills the disk.
        PartialFile partial(prepared_);
        const auto room = Preparer::Output::ensureSpace(prepared_, info_.size);
        if (!room) return std::unexpected(room.error());
        const QString stage = shownStage(plan_);
        onUpdate_({0, stage, {}});
        const Conversion conversion({*Tools::ffmpeg(), source_, plan_, info_.duration, stage}, partial,
                                    onUpdate_, stop_);
        const auto converted = conversion.run();
        if (!converted) return std::unexpected(converted.error());
        return finish(partial);
    }

    [[nodiscard]] Outcome finish(PartialFile& partial) const {
        // In this order no crash leaves a fingerprint beside a file that it does not describe.
        Preparer::Output::forget(prepared_);
        const auto moved = partial.moveTo(prepared_);
        if (!moved) return std::unexpected(moved.error());
        Preparer::Output::remember(fingerprint_, prepared_);
        return Preparer::Result{prepared_, stageText(plan_), plan_.subtitleTitles()};
    }

    QUrl source_;
    const MediaInfo& info_;
    Plan plan_;
    bool force_;
    const Preparer::UpdateCallback& onUpdate_;
    std::stop_token stop_;
    QUrl prepared_;
    QString fingerprint_;
};

}  // namespace

Outcome Preparer::prepare(const QUrl& source, bool forceTranscode, const UpdateCallback& onUpdate,
                          const std::stop_token& stop) const {
    if (!Tools::ffmpeg() || !Tools::ffprobe()) return failure(Case::toolsMissing);
    logger().notice(u"using %1 ffmpeg at %2"_s.arg(Tools::isBundled() ? u"bundled"_s : u"external"_s,
                                                   Tools::ffmpeg()->toLocalFile()));
    if (!QFileInfo(source.toLocalFile()).isReadable()) return failure(Case::unreadable);
    onUpdate({{}, Texts::tr("Looking at the file…"), {}});

    const auto info = MediaProbe::probe(source, *Tools::ffprobe(), stop);
    if (stop.stop_requested()) return failure(Case::cancelled);
    if (!info) return std::unexpected(info.error());

    const auto plan = makePlan(*info, Sidecar::find(source), forceTranscode, stop);
    if (stop.stop_requested()) return failure(Case::cancelled);
    if (!plan) return std::unexpected(plan.error());

    if (playsAsIs(*plan)) return Result{source, Texts::tr("Already Apple-native, playing as is"), {}};
    return Production(source, *info, *plan, forceTranscode, onUpdate, stop).run();
}

}  // namespace velmora
