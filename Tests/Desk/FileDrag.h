#pragma once

#include "Desk/Display.h"

#include <QUrl>

namespace velmora::test {

/// Files that are dragged from a file manager. The source is a window of this process, and speaks the
/// desktop's protocol for it (XDND 5) with the window they are over.
class FileDrag {
  public:
    FileDrag(Display& display, const QList<QUrl>& files);
    /// Anything else, of a type like "text/plain".
    FileDrag(Display& display, QByteArray content, QByteArray type);
    ~FileDrag();
    FileDrag(const FileDrag&) = delete;
    FileDrag& operator=(const FileDrag&) = delete;

    /// Over the window at a point of the screen. Whether it would take them; false too when it does not
    /// answer within ten seconds. Again over the same window: on to another point.
    bool moveOver(quint32 window, const QPoint& point);
    /// Away from the window again.
    void leave();
    /// Whether the window took them.
    bool drop();

  private:
    /// Answers what the window asks for until it says `type`.
    [[nodiscard]] std::optional<std::array<quint32, 5>> hear(const QByteArray& type);
    void handOver(const void* request);

    Display& display_;
    QByteArray content_;
    QByteArray type_;
    quint32 source_ = 0;
    quint32 target_ = 0;
};

}  // namespace velmora::test
