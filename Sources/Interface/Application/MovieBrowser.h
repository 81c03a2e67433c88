#pragma once

#include "Interface/Views/MenuRows.h"

#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// The folders of this computer and the movies in them, one folder at a time, for a dialog where the desktop
/// has none. Main thread only.
class MovieBrowser : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(velmora::MenuRows* places READ places CONSTANT FINAL)
    Q_PROPERTY(velmora::MenuRows* contents READ contents CONSTANT FINAL)
    Q_PROPERTY(QUrl folder READ folder NOTIFY folderChanged FINAL)
    Q_PROPERTY(QString name READ name NOTIFY folderChanged FINAL)
    Q_PROPERTY(bool canGoUp READ canGoUp NOTIFY folderChanged FINAL)

  public:
    /// `extensions` are those of movies: lower case, without full stop.
    explicit MovieBrowser(QStringList extensions, QObject* parent = nullptr);

    /// Shows the folder at this path, or the next one above it that can be read.
    void show(const QString& path);
    Q_INVOKABLE void goUp();

    [[nodiscard]] MenuRows* places() { return &places_; }
    /// Folders first, then movies; choosing a folder shows it.
    [[nodiscard]] MenuRows* contents() { return &contents_; }
    [[nodiscard]] QUrl folder() const { return QUrl::fromLocalFile(path_); }
    [[nodiscard]] QString name() const;
    [[nodiscard]] bool canGoUp() const { return path_ != "/"; }

  Q_SIGNALS:
    void folderChanged();
    /// The user chose this file.
    void movieChosen(const QUrl& movie);

  private:
    void choose(const QString& path);

    QStringList extensions_;
    QString path_;
    MenuRows places_;
    MenuRows contents_;
};

}  // namespace velmora
