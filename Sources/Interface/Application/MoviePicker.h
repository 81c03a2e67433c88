#pragma once

#include "System/Desktop.h"

#include <QObject>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <memory>

class QQmlEngine;

namespace velmora {

/// The dialog for choosing a movie: the desktop's own dialogs choose either files or folders, so it asks
/// which first. Main thread only; one at a time.
class MoviePicker : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(QString title READ title CONSTANT FINAL)
    Q_PROPERTY(QString message READ message CONSTANT FINAL)
    Q_PROPERTY(QStringList nameFilters READ nameFilters CONSTANT FINAL)

  public:
    explicit MoviePicker(QQmlEngine& engine, QObject* parent = nullptr);
    ~MoviePicker() override;

    /// As `Desktop::pickMovie`. A dialog that is open already is cancelled. `parent` may be null.
    void pick(const Desktop::MovieDialog& dialog, Desktop::Picked picked, QWindow* parent);

    [[nodiscard]] QString title() const { return dialog_.title; }
    [[nodiscard]] QString message() const { return dialog_.message; }
    [[nodiscard]] QStringList nameFilters() const;

    Q_INVOKABLE void choose(const QUrl& location) { finish(location); }
    Q_INVOKABLE void cancel() { finish(std::nullopt); }

  private:
    void finish(const std::optional<QUrl>& location);

    QQmlComponent component_;
    Desktop::MovieDialog dialog_;
    Desktop::Picked picked_;
    std::unique_ptr<QQuickWindow> window_;
};

}  // namespace velmora
