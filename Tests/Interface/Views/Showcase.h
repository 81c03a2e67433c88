#pragma once

#include "Interface/Views/MovieScreenModel.h"
#include "Interface/Views/RoutePickerModel.h"
#include "Support/ScriptedSystem.h"
#include "System/Clock.h"

#include <QQuickView>

#include <memory>

namespace velmora::test {

class ScriptedTelevisions : public Televisions {
    Q_OBJECT

  public:
    QList<Television> all;
    QString reason;
    std::optional<TelevisionQuestion> asked;
    QStringList added;
    QStringList forgotten;
    QStringList answers;
    int timesDismissed = 0;

    [[nodiscard]] QList<Television> televisions() const override { return all; }
    [[nodiscard]] QString unavailableReason() const override { return reason; }
    void look() override {}
    [[nodiscard]] QString add(const QString& address) override {
        added.append(address);
        return address.contains(u' ') ? QStringLiteral("That is no address.") : QString();
    }
    void forget(const QString& identifier) override { forgotten.append(identifier); }
    [[nodiscard]] std::optional<TelevisionQuestion> question() const override { return asked; }
    void answer(const QString& secret) override { answers.append(secret); }
    void dismiss() override {
        ++timesDismissed;
        ask(std::nullopt);
    }
    [[nodiscard]] QString outcome() const override { return {}; }

    void show(const QList<Television>& televisions) {
        all = televisions;
        Q_EMIT televisionsChanged();
    }
    void ask(const std::optional<TelevisionQuestion>& question) {
        asked = question;
        Q_EMIT questionChanged();
    }
};

/// A window with everything that a movie window shows, and the models behind it set by hand.
class Showcase {
  public:
    /// The clock must outlive it. Shows nothing before `open`.
    explicit Showcase(Clock& clock, QSize size = {640, 460});

    ScriptedTelevisions televisions;
    ScriptedContext context;
    MovieScreenModel movie;
    RoutePickerModel routes;
    MenuRows mainMenu;
    QQuickView view;

    /// Shows the window and waits until its pictures are drawn. False when the views cannot be loaded.
    [[nodiscard]] bool open();
    /// Handles events until nothing is left to do.
    void settle();
    /// A named property of the whole content, of the movie screen, or one item inside that.
    [[nodiscard]] QQuickItem* content() const { return view.rootObject(); }
    [[nodiscard]] QQuickItem* screen() const;
    [[nodiscard]] QQuickItem* part(const char* name) const;
    /// The middle of an item in the window.
    [[nodiscard]] static QPoint middle(const QQuickItem& item);
};

/// States as a session gives them.
namespace States {

[[nodiscard]] MovieState resume();
[[nodiscard]] MovieState preparing();
[[nodiscard]] MovieState waiting();
[[nodiscard]] MovieState handover(const QString& device);
[[nodiscard]] MovieState playing(const QString& device);
[[nodiscard]] MovieState failed(const QString& message, bool canTranscode);

}  // namespace States

}  // namespace velmora::test
