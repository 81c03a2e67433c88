#pragma once

#include "Interface/Views/MenuRows.h"
#include "Interface/Views/PickerDecisions.h"
#include "Interface/Views/Televisions.h"
#include "System/OutputContext.h"

#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velmora {

/// The menu of televisions of one window, and what a television asks before it plays. Main thread only.
class RoutePickerModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(velmora::MenuRows* rows READ rows CONSTANT FINAL)
    Q_PROPERTY(bool hasQuestion READ hasQuestion NOTIFY questionChanged FINAL)
    Q_PROPERTY(bool asksForCode READ asksForCode NOTIFY questionChanged FINAL)
    Q_PROPERTY(QString questionTitle READ questionTitle NOTIFY questionChanged FINAL)
    Q_PROPERTY(QString questionText READ questionText NOTIFY questionChanged FINAL)
    Q_PROPERTY(QString questionError READ questionError NOTIFY questionChanged FINAL)
    Q_PROPERTY(bool canAnswer READ canAnswer NOTIFY questionChanged FINAL)

  public:
    /// The clock, the televisions and the context, which may be null, must outlive it.
    RoutePickerModel(Clock& clock, Televisions& televisions, OutputContext* context,
                     QObject* parent = nullptr);

    ~RoutePickerModel() override;

    /// The picker as the session's route knows it.
    [[nodiscard]] RoutePicker& anchor();
    /// Shows the menu of devices for this context, which must outlive the model.
    void open(OutputContext& context);

    /// The route changed.
    void refresh();
    /// The chosen television is being woken.
    [[nodiscard]] bool isWaking() const;
    /// What became of the movie on the television, until another is chosen or plays; mostly empty.
    [[nodiscard]] QString notice() const { return notice_; }
    void forgetNotice() { setNotice({}); }

    [[nodiscard]] MenuRows* rows() { return &rows_; }
    [[nodiscard]] bool hasQuestion() const { return question_.has_value(); }
    [[nodiscard]] bool asksForCode() const;
    [[nodiscard]] QString questionTitle() const { return texts_.title; }
    [[nodiscard]] QString questionText() const { return texts_.text; }
    [[nodiscard]] QString questionError() const { return texts_.error; }
    [[nodiscard]] bool canAnswer() const { return texts_.canAnswer; }

    /// Tells whether the menu is on the screen: while it is, no row changes its place.
    Q_INVOKABLE void setOpen(bool on);
    /// Yields what is wrong with the text; empty when the television was added.
    Q_INVOKABLE QString add(const QString& address);
    Q_INVOKABLE void answer(const QString& secret);
    Q_INVOKABLE void dismiss();

  Q_SIGNALS:
    void openRequested();  ///< show the menu
    void questionChanged();
    void wrongAnswered();  ///< the answer was wrong: clear the field
    void answered();       ///< the television has what it asked for
    void wakingChanged();
    void noticeChanged();

  private:
    class Anchor;
    void chooseRow(const QString& rowIdentifier);
    void chooseTelevision(const QString& identifier);
    void forgetRow(const QString& rowIdentifier);
    void readQuestion();
    void tick();
    void tickWhileWaiting();
    void noteLongLook();
    void setNotice(const QString& notice);

    Clock& clock_;
    Televisions& televisions_;
    OutputContext* context_;
    std::unique_ptr<RoutePicker> anchor_;
    MenuRows rows_;
    QStringList order_;
    bool isOpen_ = false;
    bool isWaking_ = false;
    bool hasLookedLong_ = false;
    std::optional<TelevisionQuestion> question_;
    PickerDecisions::QuestionTexts texts_;
    QString notice_;
    Clock::Timer ticks_;
    Clock::Timer longLook_;
};

}  // namespace velmora
