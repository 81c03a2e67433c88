#include "Desk/FileDrag.h"

#include "Desk/Reply.h"

#include <QDeadlineTimer>

#include <poll.h>
#include <xcb/xcb.h>

namespace velmora::test {

namespace {

constexpr int patience = 10'000;
constexpr quint32 protocol = 5;

QByteArray listed(const QList<QUrl>& files) {
    QByteArray lines;
    for (const QUrl& file : files) lines += file.toEncoded() + "\r\n";
    return lines;
}

}  // namespace

FileDrag::FileDrag(Display& display, const QList<QUrl>& files)
    : FileDrag(display, listed(files), "text/uri-list") {}

FileDrag::FileDrag(Display& display, QByteArray content, QByteArray type)
    : display_(display), content_(std::move(content)), type_(std::move(type)) {
    source_ = xcb_generate_id(display_.connection());
    xcb_create_window(display_.connection(), XCB_COPY_FROM_PARENT, source_, display_.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(display_.connection(), source_, display_.atom("XdndSelection"), XCB_CURRENT_TIME);
}

FileDrag::~FileDrag() {
    leave();
    xcb_destroy_window(display_.connection(), source_);
    xcb_flush(display_.connection());
}

bool FileDrag::moveOver(quint32 window, const QPoint& point) {
    display_.movePointer(point);
    if (target_ != window) {
        leave();
        target_ = window;
        display_.sendMessage(target_, target_, "XdndEnter", {source_, protocol << 24, display_.atom(type_)});
    }
    display_.sendMessage(target_, target_, "XdndPosition",
                         {source_, 0, static_cast<quint32>(point.x() << 16 | point.y()), XCB_CURRENT_TIME,
                          display_.atom("XdndActionCopy")});
    const auto status = hear("XdndStatus");
    return status && ((*status)[1] & 1) != 0;
}

void FileDrag::leave() {
    if (target_ != 0) display_.sendMessage(target_, target_, "XdndLeave", {source_});
    target_ = 0;
}

bool FileDrag::drop() {
    if (target_ == 0) return false;
    display_.sendMessage(target_, target_, "XdndDrop", {source_, 0, XCB_CURRENT_TIME});
    target_ = 0;
    const auto finished = hear("XdndFinished");
    return finished && ((*finished)[1] & 1) != 0;
}

std::optional<std::array<quint32, 5>> FileDrag::hear(const QByteArray& type) {
    const quint32 wanted = display_.atom(type);
    const QDeadlineTimer deadline(patience);
    while (!deadline.hasExpired()) {
        const Reply event(xcb_poll_for_event(display_.connection()));
        if (!event) {
            if (xcb_connection_has_error(display_.connection()) != 0) return std::nullopt;
            pollfd readable{xcb_get_file_descriptor(display_.connection()), POLLIN, 0};
            ::poll(&readable, 1, static_cast<int>(deadline.remainingTime()));
            continue;
        }
        const int kind = event->response_type & 0x7f;
        if (kind == XCB_SELECTION_REQUEST) handOver(event.get());
        if (kind != XCB_CLIENT_MESSAGE) continue;
        const auto* const message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
        if (message->type == wanted) return std::to_array(message->data.data32);
    }
    return std::nullopt;
}

void FileDrag::handOver(const void* request) {
    const auto& asked = *static_cast<const xcb_selection_request_event_t*>(request);
    xcb_selection_notify_event_t answer{};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = asked.time;
    answer.requestor = asked.requestor;
    answer.selection = asked.selection;
    answer.target = asked.target;
    if (asked.target == display_.atom(type_)) {
        answer.property = asked.property;
        xcb_change_property(display_.connection(), XCB_PROP_MODE_REPLACE, asked.requestor, asked.property,
                            asked.target, 8, static_cast<quint32>(content_.size()), content_.constData());
    }
    xcb_send_event(display_.connection(), 0, asked.requestor, 0, reinterpret_cast<const char*>(&answer));
    xcb_flush(display_.connection());
}

}  // namespace velmora::test
