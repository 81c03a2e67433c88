#pragma once

#include "Platform/Linux/MpvPlayer.h"

#include <QPointer>
#include <QQuickItem>

#include <memory>

namespace velmora {

/// What a player on this computer shows, whole and with round corners, in the middle of the item; nothing
/// until there is a picture. Its implicit size is the picture's, and empty without one. Main thread only.
///
/// Where the window is drawn with OpenGL, mpv draws with it too, straight into what the window shows;
/// otherwise, or where mpv refuses, it draws on the processor. So it does where OpenGL itself is drawn on the
/// processor, which costs several times as much.
class LivePicture : public QQuickItem {
    Q_OBJECT

  public:
    static constexpr double radius = 10;  ///< of the corners, as the still's

    enum class OpenGl { withGraphicsProcessor, always };

    /// Shown by nothing else meanwhile.
    explicit LivePicture(MpvPlayer& player, OpenGl openGl = OpenGl::withGraphicsProcessor);

  protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

  private:
    void choosePainter();
    void takePainter(std::unique_ptr<QQuickItem> painter);
    void useMemory();
    void takeFirstPicture();
    void measure();
    void fit();

    const QPointer<MpvPlayer> player_;
    const OpenGl openGl_;
    bool hasPicture_ = false;
    std::unique_ptr<QQuickItem> painter_;
};

}  // namespace velmora
