#include "Desk/Display.h"

#include "Desk/Reply.h"

#include <X11/keysym.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>

namespace velmora::test {

namespace {

constexpr quint32 unicodeSymbol = 0x01000000;
/// Enough for any title and any number of windows.
constexpr quint32 propertyWords = 4096;

quint32 symbolOf(char32_t character) {
    return character < 0x100 ? character : unicodeSymbol | character;
}

quint32 symbolOf(Qt::Key key) {
    static const std::map<Qt::Key, quint32> named{
        {Qt::Key_Return, XK_Return}, {Qt::Key_Enter, XK_KP_Enter}, {Qt::Key_Escape, XK_Escape},
        {Qt::Key_Tab, XK_Tab},       {Qt::Key_Backtab, XK_Tab},    {Qt::Key_Backspace, XK_BackSpace},
        {Qt::Key_Delete, XK_Delete}, {Qt::Key_Left, XK_Left},      {Qt::Key_Right, XK_Right},
        {Qt::Key_Up, XK_Up},         {Qt::Key_Down, XK_Down},      {Qt::Key_Home, XK_Home},
        {Qt::Key_End, XK_End},       {Qt::Key_PageUp, XK_Page_Up}, {Qt::Key_PageDown, XK_Page_Down},
        {Qt::Key_F10, XK_F10},       {Qt::Key_F4, XK_F4},          {Qt::Key_Menu, XK_Menu},
        {Qt::Key_Space, XK_space},
    };
    const auto found = named.find(key);
    if (found != named.end()) return found->second;
    // Qt names letters by their capitals; the key itself is the small one.
    return key < 0x100 ? symbolOf(QChar::toLower(static_cast<char32_t>(key))) : 0;
}

constexpr std::array modifierKeys{
    std::pair{Qt::ControlModifier, XK_Control_L},
    std::pair{Qt::ShiftModifier, XK_Shift_L},
    std::pair{Qt::AltModifier, XK_Alt_L},
    std::pair{Qt::MetaModifier, XK_Super_L},
};

quint8 numberOf(Qt::MouseButton button) {
    return button == Qt::RightButton ? 3 : button == Qt::MiddleButton ? 2 : 1;
}

}  // namespace

std::expected<std::unique_ptr<Display>, QString> Display::open(const QString& name) {
    int screen = 0;
    auto* const connection = xcb_connect(name.toLatin1().constData(), &screen);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return std::unexpected(QStringLiteral("there is no X server at %1").arg(name));
    }
    const auto* const testing = xcb_get_extension_data(connection, &xcb_test_id);
    if (!testing || testing->present == 0) {
        xcb_disconnect(connection);
        return std::unexpected(QStringLiteral("the X server does not take test input"));
    }
    return std::unique_ptr<Display>(new Display(connection, screen));
}

Display::Display(xcb_connection_t* connection, int screen) : connection_(connection) {
    auto each = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (; screen > 0 && each.rem > 1; --screen) xcb_screen_next(&each);
    root_ = each.data->root;
    area_ = {0, 0, each.data->width_in_pixels, each.data->height_in_pixels};
    readKeyboard();
}

Display::~Display() {
    xcb_disconnect(connection_);
}

quint32 Display::atom(const QByteArray& name) const {
    const auto asked = xcb_intern_atom(connection_, 0, static_cast<quint16>(name.size()), name.constData());
    const Reply reply(xcb_intern_atom_reply(connection_, asked, nullptr));
    return reply ? reply->atom : 0;
}

QByteArray Display::property(quint32 window, const QByteArray& name) const {
    const auto asked =
        xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, propertyWords);
    const Reply reply(xcb_get_property_reply(connection_, asked, nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

void Display::sendMessage(quint32 to, quint32 about, const QByteArray& type,
                          const std::array<quint32, 5>& data) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = about;
    message.type = atom(type);
    std::ranges::copy(data, message.data.data32);
    const quint32 mask =
        to == root_ ? XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : 0;
    xcb_send_event(connection_, 0, to, mask, reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
}

namespace {

QList<quint32> numbers(const QByteArray& property) {
    QList<quint32> values(property.size() / 4);
    std::memcpy(values.data(), property.constData(), static_cast<size_t>(values.size()) * 4);
    return values;
}

}  // namespace

bool Display::isManaged() const {
    return !property(root_, "_NET_SUPPORTING_WM_CHECK").isEmpty();
}

std::optional<DesktopWindow> Display::describe(quint32 window) const {
    const auto askedSize = xcb_get_geometry(connection_, window);
    const auto askedPlace = xcb_translate_coordinates(connection_, window, root_, 0, 0);
    const Reply size(xcb_get_geometry_reply(connection_, askedSize, nullptr));
    const Reply place(xcb_translate_coordinates_reply(connection_, askedPlace, nullptr));
    if (!size || !place) return std::nullopt;
    const QList<quint32> pid = numbers(property(window, "_NET_WM_PID"));
    return DesktopWindow{.id = window,
                         .title = QString::fromUtf8(property(window, "_NET_WM_NAME")),
                         .pid = pid.value(0),
                         .geometry = {place->dst_x, place->dst_y, size->width, size->height}};
}

QList<DesktopWindow> Display::windows() const {
    QList<DesktopWindow> windows;
    const QList<quint32> listed = numbers(property(root_, "_NET_CLIENT_LIST"));
    for (const quint32 window : listed)
        if (const auto described = describe(window)) windows << *described;
    return windows;
}

quint32 Display::activeWindow() const {
    return numbers(property(root_, "_NET_ACTIVE_WINDOW")).value(0);
}

void Display::activate(quint32 window) {
    constexpr quint32 fromAPager = 2;
    sendMessage(root_, window, "_NET_ACTIVE_WINDOW", {fromAPager});
    settle();
}

void Display::close(quint32 window) {
    sendMessage(root_, window, "_NET_CLOSE_WINDOW", {});
    settle();
}

void Display::place(quint32 window, const QRect& geometry) {
    constexpr quint32 staticGravityAndAll = 10 | 0xf00 | 2 << 12;
    const auto signedWord = [](int number) { return static_cast<quint32>(number); };
    sendMessage(root_, window, "_NET_MOVERESIZE_WINDOW",
                {staticGravityAndAll, signedWord(geometry.x()), signedWord(geometry.y()),
                 signedWord(geometry.width()), signedWord(geometry.height())});
    settle();
}

void Display::readKeyboard() {
    const auto* const setup = xcb_get_setup(connection_);
    firstKey_ = setup->min_keycode;
    const auto count = static_cast<quint8>(setup->max_keycode - firstKey_ + 1);
    const auto asked = xcb_get_keyboard_mapping(connection_, firstKey_, count);
    const Reply reply(xcb_get_keyboard_mapping_reply(connection_, asked, nullptr));
    if (!reply) return;
    symbolsPerKey_ = reply->keysyms_per_keycode;
    const auto* const first = xcb_get_keyboard_mapping_keysyms(reply.get());
    symbols_ = QList<quint32>(first, first + xcb_get_keyboard_mapping_keysyms_length(reply.get()));
}

std::optional<Display::Key> Display::keyFor(quint32 symbol) {
    const auto key = [this](qsizetype index) {
        return Key{static_cast<quint8>(firstKey_ + index / symbolsPerKey_), index % symbolsPerKey_ == 1};
    };
    for (qsizetype index = 0; index < symbols_.size(); ++index)
        if (symbols_[index] == symbol && index % symbolsPerKey_ < 2) return key(index);
    // The keyboard lacks it: a key without a meaning gets this one.
    for (qsizetype index = 0; index + symbolsPerKey_ <= symbols_.size(); index += symbolsPerKey_) {
        const auto first = symbols_.begin() + index;
        if (!std::all_of(first, first + symbolsPerKey_, [](quint32 each) { return each == 0; })) continue;
        std::fill_n(first, 2, symbol);
        xcb_change_keyboard_mapping(connection_, 1, key(index).code, symbolsPerKey_, &*first);
        settle();
        return key(index);
    }
    return std::nullopt;
}

void Display::fake(quint8 type, quint8 detail, const QPoint& at) {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_, static_cast<qint16>(at.x()),
                        static_cast<qint16>(at.y()), 0);
}

bool Display::stroke(quint32 symbol, Qt::KeyboardModifiers modifiers) {
    const auto key = symbol == 0 ? std::nullopt : keyFor(symbol);
    if (!key) return false;
    if (key->isShifted) modifiers |= Qt::ShiftModifier;
    QList<quint8> held;
    for (const auto& [modifier, name] : modifierKeys)
        if (modifiers.testFlag(modifier)) held << keyFor(static_cast<quint32>(name)).value_or(Key{}).code;
    held << key->code;
    for (const quint8 code : std::as_const(held)) fake(XCB_KEY_PRESS, code);
    std::ranges::reverse(held);
    for (const quint8 code : std::as_const(held)) fake(XCB_KEY_RELEASE, code);
    settle();
    return true;
}

bool Display::press(QKeyCombination keys) {
    auto modifiers = keys.keyboardModifiers();
    if (keys.key() == Qt::Key_Backtab) modifiers |= Qt::ShiftModifier;
    return stroke(symbolOf(keys.key()), modifiers);
}

bool Display::type(const QString& text) {
    return std::ranges::all_of(text.toUcs4(), [this](uint character) {
        return stroke(symbolOf(static_cast<char32_t>(character)), {});
    });
}

void Display::movePointer(const QPoint& to) {
    fake(XCB_MOTION_NOTIFY, 0, to);
    settle();
}

void Display::setButton(Qt::MouseButton button, bool isDown) {
    fake(isDown ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, numberOf(button));
    settle();
}

void Display::click(const QPoint& at, Qt::MouseButton button, int times) {
    movePointer(at);
    for (; times > 0; --times) {
        setButton(button, true);
        setButton(button, false);
    }
}

void Display::drag(const QPoint& from, const QPoint& to) {
    constexpr int steps = 20;
    movePointer(from);
    setButton(Qt::LeftButton, true);
    for (int step = 1; step <= steps; ++step) movePointer(from + (to - from) * step / steps);
    setButton(Qt::LeftButton, false);
}

void Display::scroll(int notches) {
    const quint8 button = notches < 0 ? 4 : 5;
    for (int left = std::abs(notches); left > 0; --left) {
        fake(XCB_BUTTON_PRESS, button);
        fake(XCB_BUTTON_RELEASE, button);
    }
    settle();
}

QImage Display::picture(const QRect& part) const {
    const QRect seen = part & area_;
    if (seen.isEmpty()) return {};
    const auto asked =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, static_cast<qint16>(seen.x()),
                      static_cast<qint16>(seen.y()), static_cast<quint16>(seen.width()),
                      static_cast<quint16>(seen.height()), ~0U);
    const Reply reply(xcb_get_image_reply(connection_, asked, nullptr));
    // Desk makes screens of 24 bits, which come in words.
    if (!reply || reply->depth != 24) return {};
    return QImage(xcb_get_image_data(reply.get()), seen.width(), seen.height(), QImage::Format_RGB32).copy();
}

QImage Display::picture() const {
    return picture(area_);
}

void Display::settle() {
    const Reply seen(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace velmora::test
