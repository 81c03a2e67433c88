#include "Interface/Views/RoutePickerModel.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace velmora {

namespace {

constexpr Clock::Duration longLook = 6s;

}  // namespace

class RoutePickerModel::Anchor : public RoutePicker {
  public:
    explicit Anchor(RoutePickerModel& model) : model_(model) {}

    [[nodiscard]] std::optional<QString> outputContextID() const override { return contextID_; }
    void setOutputContextID(const QString& contextID) override { contextID_ = contextID; }
    void setPrioritizesVideoDevices(bool /*on*/) override {}  // it always does
    void showRoutePickingControls(OutputContext& context) override { model_.open(context); }

  private:
    RoutePickerModel& model_;
    std::optional<QString> contextID_;
};

RoutePickerModel::RoutePickerModel(Clock& clock, Televisions& televisions, OutputContext* context,
                                   QObject* parent)
    : QObject(parent),
      clock_(clock),
      televisions_(televisions),
      context_(context),
      anchor_(std::make_unique<Anchor>(*this)) {
    connect(&rows_, &MenuRows::chosen, this, &RoutePickerModel::chooseRow);
    connect(&rows_, &MenuRows::forgotten, this, &RoutePickerModel::forgetRow);
    connect(&televisions_, &Televisions::televisionsChanged, this, &RoutePickerModel::refresh);
    connect(&televisions_, &Televisions::questionChanged, this, &RoutePickerModel::readQuestion);
    connect(&televisions_, &Televisions::outcomeChanged, this, [this] { setNotice(televisions_.outcome()); });
    refresh();
    readQuestion();
}

RoutePickerModel::~RoutePickerModel() = default;

RoutePicker& RoutePickerModel::anchor() {
    return *anchor_;
}

void RoutePickerModel::open(OutputContext& context) {
    context_ = &context;
    Q_EMIT openRequested();
}

void RoutePickerModel::refresh() {
    const auto device = context_ ? context_->outputDevice() : std::nullopt;
    PickerDecisions::Routes routes{.televisions = televisions_.televisions(),
                                   .chosen = device ? device->identifier : std::nullopt,
                                   .chosenName = device ? device->name : std::nullopt,
                                   .unavailableReason = televisions_.unavailableReason(),
                                   .hasLookedLong = hasLookedLong_,
                                   .order = isOpen_ ? order_ : QStringList(),
                                   .now = clock_.now()};
    order_ = PickerDecisions::order(routes);
    routes.order = order_;
    rows_.show(PickerDecisions::rows(routes));
    const auto chosen = std::ranges::find_if(routes.televisions, [&routes](const Television& one) {
        return routes.chosen == one.identifier && one.activity == Television::Activity::waking;
    });
    const bool isWaking = chosen != routes.televisions.end();
    if (std::exchange(isWaking_, isWaking) != isWaking) Q_EMIT wakingChanged();
    tickWhileWaiting();
}

bool RoutePickerModel::isWaking() const {
    return isWaking_;
}

bool RoutePickerModel::asksForCode() const {
    return question_ && question_->asks == Television::Asks::code;
}

void RoutePickerModel::setOpen(bool on) {
    isOpen_ = on;
    if (!on) return;
    televisions_.look();
    hasLookedLong_ = false;
    longLook_ = clock_.after(longLook, [this] { noteLongLook(); });
    order_.clear();
    refresh();
}

void RoutePickerModel::noteLongLook() {
    hasLookedLong_ = true;
    refresh();
}

QString RoutePickerModel::add(const QString& address) {
    const QString problem = televisions_.add(address.trimmed());
    if (problem.isEmpty()) forgetNotice();
    return problem;
}

void RoutePickerModel::answer(const QString& secret) {
    if (!question_ || !texts_.canAnswer) return;
    televisions_.answer(secret);
    Q_EMIT answered();
}

void RoutePickerModel::dismiss() {
    if (!question_) return;
    const QString notice = PickerDecisions::dismissed(*question_);
    televisions_.dismiss();
    setNotice(notice);
}

void RoutePickerModel::setNotice(const QString& notice) {
    if (std::exchange(notice_, notice) != notice) Q_EMIT noticeChanged();
}

void RoutePickerModel::chooseRow(const QString& rowIdentifier) {
    forgetNotice();
    if (const auto identifier = PickerDecisions::televisionOf(rowIdentifier))
        chooseTelevision(*identifier);
    else if (context_)
        context_->setOutputDevice({}, OutputContext::everything);
    refresh();
}

void RoutePickerModel::chooseTelevision(const QString& identifier) {
    const QList<Television> all = televisions_.televisions();
    const auto television = std::ranges::find(all, identifier, &Television::identifier);
    if (!context_ || television == all.end()) return;
    const OutputContext::Device device{.name = television->name, .identifier = identifier};
    context_->setOutputDevice(device, OutputContext::everything);
}

void RoutePickerModel::forgetRow(const QString& rowIdentifier) {
    if (const auto identifier = PickerDecisions::televisionOf(rowIdentifier))
        televisions_.forget(*identifier);
}

void RoutePickerModel::readQuestion() {
    const bool wasWrong = question_ && question_->wasWrong;
    question_ = televisions_.question();
    texts_ =
        question_ ? PickerDecisions::question(*question_, clock_.now()) : PickerDecisions::QuestionTexts();
    tickWhileWaiting();
    Q_EMIT questionChanged();
    if (question_ && question_->wasWrong && !wasWrong) Q_EMIT wrongAnswered();
}

// Seconds are counted down in what is shown.
void RoutePickerModel::tickWhileWaiting() {
    const Clock::Instant now = clock_.now();
    QList<std::optional<Clock::Instant>> instants{question_ ? question_->nextTry : std::nullopt};
    for (const Television& television : televisions_.televisions()) instants.append(television.nextTry);
    const bool isWaiting = std::ranges::any_of(
        instants, [now](const auto& instant) { return PickerDecisions::secondsUntil(instant, now) > 0; });
    ticks_ = isWaiting ? clock_.after(1s, [this] { tick(); }) : Clock::Timer();
}

void RoutePickerModel::tick() {
    refresh();
    if (question_) readQuestion();
}

}  // namespace velmora
