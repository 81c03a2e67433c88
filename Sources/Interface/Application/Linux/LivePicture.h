#pragma once

#include <QImage>
#include <QQuickItem>

#include <memory>

struct mpv_handle;

namespace velmora {

/// What a player on this computer shows, with round corners. Nothing is drawn until there is a picture.
///
/// Where the window is drawn with OpenGL, mpv draws with it too; otherwise on the processor. Main thread
/// only.
class LivePicture : public QQuickItem {
    Q_OBJECT

  public:
    static constexpr double radius = 10;  ///< of the corners, as the still's

    /// Of an `MpvPlayer`, and shown by nothing else meanwhile; null shows nothing.
    explicit LivePicture(std::shared_ptr<mpv_handle> mpv);

  protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

  private:
    void begin();

    std::shared_ptr<mpv_handle> mpv_;
    std::unique_ptr<QQuickItem> painter_;
};

}  // namespace velmora
