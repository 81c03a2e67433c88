#include "Interface/Application/Freedesktop/TaskbarProgress.h"

#include <QDBusMessage>
#include <QVariantMap>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora {

using namespace Qt::StringLiterals;

TaskbarProgress::TaskbarProgress(QDBusConnection bus, QObject* parent)
    : QObject(parent), bus_(std::move(bus)) {}

void TaskbarProgress::show(const QObject* window, std::optional<double> progress) {
    if (progress)
        windows_.insert(window, std::clamp(*progress, 0.0, 1.0));
    else
        windows_.remove(window);
    send();
}

std::optional<double> TaskbarProgress::progress() const {
    if (windows_.isEmpty()) return std::nullopt;
    return std::accumulate(windows_.cbegin(), windows_.cend(), 0.0) / static_cast<double>(windows_.size());
}

void TaskbarProgress::send() {
    const auto average = progress();
    // A whole percent is the finest that such a bar shows.
    const auto percent =
        average ? std::optional(static_cast<int>(std::lround(*average * 100))) : std::nullopt;
    if (percent == sentPercent_) return;
    sentPercent_ = percent;
    if (!bus_.isConnected()) return;
    QDBusMessage signal = QDBusMessage::createSignal(u"/com/canonical/unity/launcherentry/velmora"_s,
                                                     u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s);
    signal << u"application://com.quillet.velmora.desktop"_s
           << QVariantMap{{u"progress"_s, average.value_or(0.0)},
                          {u"progress-visible"_s, average.has_value()}};
    bus_.send(signal);
}

}  // namespace velmora
