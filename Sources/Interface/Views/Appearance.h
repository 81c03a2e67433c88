#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace velmora {

/// How the user wants windows to look. One for the process; `DesktopAppearance` keeps it as the desktop is.
/// Main thread only.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed FINAL)
    Q_PROPERTY(bool hasHighContrast READ hasHighContrast NOTIFY changed FINAL)
    Q_PROPERTY(bool animates READ animates NOTIFY changed FINAL)
    Q_PROPERTY(double textScale READ textScale NOTIFY changed FINAL)

  public:
    struct Look {
        bool isDark = true;
        bool hasHighContrast = false;
        bool animates = true;
        double textScale = 1;  ///< of the sizes that the views are designed with
        friend bool operator==(const Look&, const Look&) = default;
    };

    [[nodiscard]] static Appearance& instance();
    static Appearance* create(QQmlEngine* engine, QJSEngine* scripts);

    [[nodiscard]] const Look& look() const { return look_; }
    void setLook(const Look& look);

    [[nodiscard]] bool isDark() const { return look_.isDark; }
    [[nodiscard]] bool hasHighContrast() const { return look_.hasHighContrast; }
    [[nodiscard]] bool animates() const { return look_.animates; }
    [[nodiscard]] double textScale() const { return look_.textScale; }

    /// Puts text on the clipboard.
    Q_INVOKABLE void copy(const QString& text) const;

  Q_SIGNALS:
    void changed();

  private:
    Appearance() = default;
    Look look_;
};

}  // namespace velmora
