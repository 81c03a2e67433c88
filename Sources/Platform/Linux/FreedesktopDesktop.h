#pragma once

#include "System/Desktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QThreadPool>

namespace velmora {

/// The desktop through what all of them offer: the file manager's interface on the session bus, `xdg-open`,
/// and the shared list of recent documents.
class FreedesktopDesktop : public QObject, public Desktop {
    Q_OBJECT

  public:
    using MoviePicker = std::function<void(const MovieDialog& dialog, Picked picked)>;

    /// Dialogs need a window, so the interface brings its own; without one nothing is ever picked.
    explicit FreedesktopDesktop(MoviePicker picker = {},
                                QDBusConnection sessionBus = QDBusConnection::sessionBus());

    void pickMovie(const MovieDialog& dialog, Picked picked) override;
    void reveal(const QUrl& file) override;
    void noteRecentDocument(const QUrl& file) override;

  private:
    void openFolder(const QUrl& file);

    MoviePicker picker_;
    QDBusConnection bus_;
    QThreadPool listing_;  ///< of recent documents, one by one: a list is written through to the disk
};

}  // namespace velmora
