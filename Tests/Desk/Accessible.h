#pragma once

#include <QDBusConnection>
#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace velmora::test {

/// What a screen reader is told of one thing in a window, as it was when it was asked. A value.
struct Accessible {
    QString role;  ///< as the toolkit names it: "push button", "menu item", "heading"
    QString name;
    QString description;
    quint64 states = 0;   ///< a bit for each `State`
    QRect bounds;         ///< in pixels of the screen
    QStringList actions;  ///< "Press", "SetFocus"…
    QList<Accessible> children;

    QString service;  ///< where it is on the bus
    QString path;

    /// The numbers are the protocol's.
    enum State {
        active = 1,
        checked = 4,
        enabled = 8,
        focusable = 11,
        focused = 12,
        sensitive = 24,
        showing = 25,
        checkable = 41,
    };
    [[nodiscard]] bool is(State state) const { return (states >> state & 1) != 0; }

    /// Itself or the first below that shows and has the role and the name; an empty text is any.
    [[nodiscard]] const Accessible* find(const QString& wantedRole, const QString& wantedName) const;
    /// All of them, from the top.
    [[nodiscard]] QList<Accessible> all(const QString& wantedRole, const QString& wantedName = {}) const;
    /// A line for each, indented; for a failed test's message.
    [[nodiscard]] QString toText(int depth = 0) const;
};

/// The accessibility bus that a session bus knows of. Calls wait for their answers. Main thread.
class AccessibilityBus {
  public:
    /// Starts it unless it runs.
    explicit AccessibilityBus(const QDBusConnection& sessionBus);
    ~AccessibilityBus();
    AccessibilityBus(const AccessibilityBus&) = delete;
    AccessibilityBus& operator=(const AccessibilityBus&) = delete;

    [[nodiscard]] bool isConnected() const { return bus_.isConnected(); }
    /// Everything in the program's windows; absent until it has made itself known.
    [[nodiscard]] std::optional<Accessible> tree(qint64 pid) const;
    /// False when it is gone, or has no such action.
    bool act(const Accessible& accessible, const QString& action) const;
    /// What is written in a text field.
    [[nodiscard]] QString text(const Accessible& accessible) const;
    /// Of a slider or a progress bar.
    [[nodiscard]] std::optional<double> value(const Accessible& accessible) const;
    /// False when it has none.
    bool setValue(const Accessible& accessible, double value) const;

  private:
    [[nodiscard]] Accessible read(const QString& service, const QString& path, int depth) const;
    [[nodiscard]] QString application(qint64 pid) const;

    QString name_;
    QDBusConnection bus_;
};

}  // namespace velmora::test
