#include "Interface/Updater/Updater.h"

#include "Diagnostics/Log.h"
#include "System/Preferences.h"

#include <QCoreApplication>
#include <QPointer>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Updater)
};

/// When the feed accepted last was issued, as ISO text.
const QString issuedKey = u"updateFeedIssued"_s;

QString failureTitle() {
    return Texts::tr("Couldn't check for updates");
}

}  // namespace

Updater::Updater(Build build, UpdateSource& source, Preferences& preferences, QObject* parent)
    : QObject(parent),
      build_(std::move(build)),
      source_(source),
      preferences_(preferences),
      canCheckForUpdates_(!build_.isDevelopment()) {}

void Updater::checkForUpdates() {
    if (!canCheckForUpdates_) return;
    setCanCheck(false);
    if (!build_.keeper.isEmpty())
        return finish({Texts::tr("Updates come with your system"),
                       Texts::tr("This Velmora was installed by %1, which also keeps it up to date.")
                           .arg(build_.keeper)});
    if (build_.feed.isEmpty() || build_.key.isEmpty())
        return finish({failureTitle(),
                       Texts::tr("This build of Velmora does not know where its updates are published.")});
    source_.fetch(build_.feed, [self = QPointer(this)](const UpdateSource::Answer& answer) {
        if (self) self->answered(answer);
    });
}

void Updater::answered(const UpdateSource::Answer& answer) {
    const Outcome outcome = judge(answer);
    logger().notice(u"update check: "_s + (outcome.page.isEmpty() ? outcome.text : outcome.title));
    finish(outcome);
}

Updater::Outcome Updater::judge(const UpdateSource::Answer& answer) {
    if (!answer) return {failureTitle(), answer.error()};
    const QString stored = preferences_.value(issuedKey).value_or(QVariant()).toString();
    const auto feed = UpdateFeed::read(*answer, build_.key, QDateTime::fromString(stored, Qt::ISODate));
    if (!feed) return {failureTitle(), UpdateFeed::explain(feed.error())};
    preferences_.set(issuedKey, feed->issued.toString(Qt::ISODate));

    const auto installed = QVersionNumber::fromString(build_.version);
    if (QVersionNumber::compare(feed->version.normalized(), installed.normalized()) <= 0)
        return {Texts::tr("Velmora is up to date"),
                Texts::tr("Version %1 is the newest.").arg(build_.version)};
    QString text = Texts::tr("You have version %1.").arg(build_.version);
    if (!feed->notes.isEmpty()) text += u"\n\n"_s + feed->notes;
    return {Texts::tr("Velmora %1 is available").arg(feed->version.toString()), text, feed->page};
}

void Updater::finish(const Outcome& outcome) {
    // Never from inside the call that asked.
    QMetaObject::invokeMethod(
        this,
        [this, outcome] {
            setCanCheck(true);
            Q_EMIT checked(outcome);
        },
        Qt::QueuedConnection);
}

void Updater::setCanCheck(bool can) {
    if (canCheckForUpdates_ == can) return;
    canCheckForUpdates_ = can;
    Q_EMIT canCheckForUpdatesChanged();
}

}  // namespace velmora
