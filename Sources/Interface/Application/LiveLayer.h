#pragma once

#include "Interface/Application/MovieWindow.h"

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velmora {

/// The pictures of a window's player, whichever it is at the moment. Main thread only.
class LiveLayer : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// To be set once.
    Q_PROPERTY(velmora::MovieWindow* controller MEMBER controller_ REQUIRED FINAL)

  protected:
    void componentComplete() override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

  private:
    void follow();

    MovieWindow* controller_ = nullptr;
    std::unique_ptr<QQuickItem> picture_;
};

}  // namespace velmora
