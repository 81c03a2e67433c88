#pragma once

#include <QImage>
#include <QKeyCombination>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>

#include <array>
#include <expected>
#include <memory>
#include <optional>

struct xcb_connection_t;

namespace velmora::test {

/// A window as the window manager lists it.
struct DesktopWindow {
    quint32 id = 0;
    QString title;
    qint64 pid = 0;
    QRect geometry;  ///< without its frame, in pixels of the screen
};

/// The screen, keyboard and pointer of an X server, for what a user sees and does. Keys and the pointer go
/// through the server (XTEST), so they reach whatever has the focus or lies under the pointer. Main thread.
class Display {
  public:
    /// `name` as in DISPLAY. Fails with the reason.
    [[nodiscard]] static std::expected<std::unique_ptr<Display>, QString> open(const QString& name);
    ~Display();
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    /// Whether a window manager is there.
    [[nodiscard]] bool isManaged() const;
    /// In the order in which they appeared.
    [[nodiscard]] QList<DesktopWindow> windows() const;
    /// 0: none.
    [[nodiscard]] quint32 activeWindow() const;
    /// Asked of the window manager; wait for `activeWindow`.
    void activate(quint32 window);
    /// As its frame's close button does.
    void close(quint32 window);
    /// Moves the client area to a place on the screen; the manager may keep a frame's distance.
    void place(quint32 window, const QRect& geometry);

    /// One key with its modifiers, as `Qt::CTRL | Qt::Key_O`. False where the keyboard has no such key.
    bool press(QKeyCombination keys);
    /// False at the first character that no key can be made to give.
    bool type(const QString& text);

    void movePointer(const QPoint& to);
    void setButton(Qt::MouseButton button, bool isDown);
    void click(const QPoint& at, Qt::MouseButton button = Qt::LeftButton, int times = 1);
    /// With the left button, in small steps.
    void drag(const QPoint& from, const QPoint& to);
    /// Notches of the wheel; towards the user is positive.
    void scroll(int notches);

    /// Of the part that is on the screen, with whatever lies over it.
    [[nodiscard]] QImage picture(const QRect& part) const;
    [[nodiscard]] QImage picture() const;

    [[nodiscard]] xcb_connection_t* connection() const { return connection_; }
    [[nodiscard]] quint32 root() const { return root_; }
    [[nodiscard]] quint32 atom(const QByteArray& name) const;
    /// Empty when the window or the property is not there.
    [[nodiscard]] QByteArray property(quint32 window, const QByteArray& name) const;
    /// To the window itself, or to the window manager through `to` = root.
    void sendMessage(quint32 to, quint32 about, const QByteArray& type, const std::array<quint32, 5>& data);

  private:
    struct Key {
        quint8 code = 0;
        bool isShifted = false;
    };

    Display(xcb_connection_t* connection, int screen);
    void readKeyboard();
    [[nodiscard]] std::optional<Key> keyFor(quint32 symbol);
    [[nodiscard]] std::optional<DesktopWindow> describe(quint32 window) const;
    void fake(quint8 type, quint8 detail, const QPoint& at = {});
    bool stroke(quint32 symbol, Qt::KeyboardModifiers modifiers);
    /// Returns when the server has seen everything sent.
    void settle();

    xcb_connection_t* connection_;
    quint32 root_ = 0;
    QRect area_;
    quint8 firstKey_ = 0;
    quint8 symbolsPerKey_ = 0;
    QList<quint32> symbols_;
};

}  // namespace velmora::test
