#include "Interface/Application/AppDelegate.h"

#include <utility>

namespace velmora {

void AppDelegate::open(const QList<QUrl>& movies) {
    for (const QUrl& movie : movies) {
        if (openWindow_)
            openWindow_(movie);
        else
            pending_ << movie;
    }
    if (bringToFront_) bringToFront_();
}

std::optional<QUrl> AppDelegate::takePendingUrl() {
    // Taken out first: a window that opens meanwhile may ask too.
    QList<QUrl> waiting = std::exchange(pending_, {});
    if (waiting.isEmpty()) return std::nullopt;
    QUrl first = waiting.takeFirst();
    if (openWindow_)
        for (const QUrl& movie : std::as_const(waiting)) openWindow_(movie);
    return first;
}

}  // namespace velmora
