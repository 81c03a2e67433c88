#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <optional>

namespace velmora {

/// The desktop around the windows. Main thread only. Nothing here fails: what the desktop cannot do is left
/// undone with a log line.
class Desktop {
  public:
    /// What the dialog for choosing a movie says and offers. Folders can be chosen too; one thing at a time.
    struct MovieDialog {
        QString title;
        QString message;
        QStringList extensions;  ///< lower case, without full stop
    };
    using Picked = std::function<void(const std::optional<QUrl>& location)>;

    Desktop() = default;
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    virtual ~Desktop() = default;

    /// Brings the application to the front and lets the user choose. `picked` is called once from the event
    /// loop, with nothing when the user decided otherwise. The caller may be gone by then: it guards itself.
    virtual void pickMovie(const MovieDialog& dialog, Picked picked) = 0;

    /// Shows the file, selected, in the file manager.
    virtual void reveal(const QUrl& file) = 0;

    /// Adds the file to the user's list of recent documents.
    virtual void noteRecentDocument(const QUrl& file) = 0;
};

}  // namespace velmora
