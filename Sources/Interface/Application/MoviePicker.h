#pragma once

#include "Interface/Application/Freedesktop/FileChooserPortal.h"
#include "Interface/Application/MovieBrowser.h"
#include "System/Desktop.h"

#include <QObject>
#include <QPointer>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <memory>

class QQmlEngine;

namespace velmora {

/// The dialog for choosing a movie: the desktop's own where its portal has one, else one of ours. The
/// desktops' dialogs take either files or folders; ours takes both. Main thread only; one at a time.
class MoviePicker : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(QString title READ title CONSTANT FINAL)
    Q_PROPERTY(QString message READ message CONSTANT FINAL)
    Q_PROPERTY(velmora::MovieBrowser* browser READ browser CONSTANT FINAL)

  public:
    enum class What { file, folder };

    MoviePicker(QQmlEngine& engine, const QDBusConnection& bus, QObject* parent = nullptr);
    ~MoviePicker() override;

    /// As `Desktop::pickMovie`. A dialog that is open already is cancelled. `parent` may be null.
    void pick(What what, const Desktop::MovieDialog& dialog, Desktop::Picked picked, QWindow* parent);

    [[nodiscard]] QString title() const { return dialog_.title; }
    [[nodiscard]] QString message() const { return dialog_.message; }
    [[nodiscard]] MovieBrowser* browser() { return browser_.get(); }

    Q_INVOKABLE void choose(const QUrl& location) { finish(location); }
    Q_INVOKABLE void cancel() { finish(std::nullopt); }

  private:
    void showOwn();
    void finish(const std::optional<QUrl>& location);

    QQmlComponent component_;
    FileChooserPortal portal_;
    Desktop::MovieDialog dialog_;
    Desktop::Picked picked_;
    QPointer<QWindow> parent_;
    QString folder_;  ///< where something was chosen last
    std::unique_ptr<MovieBrowser> browser_;
    std::unique_ptr<QQuickWindow> window_;
};

}  // namespace velmora
