#pragma once

#include "Interface/Application/MovieWindow.h"

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velmora {

/// The pictures of a window's player, whichever it is at the moment, while the item is visible in another.
/// The implicit size is theirs, and empty while there is none. Main thread only.
class LiveLayer : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// To be set once.
    Q_PROPERTY(velmora::MovieWindow* controller MEMBER controller_ REQUIRED FINAL)

  protected:
    void componentComplete() override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

  private:
    void follow();
    void measure();

    MovieWindow* controller_ = nullptr;
    const Player* shown_ = nullptr;
    std::unique_ptr<QQuickItem> picture_;
};

}  // namespace velmora
