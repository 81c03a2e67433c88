#include "Television/Session/QueueVerbs.h"

#include "Television/Session/QueueRequest.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using State = SimulatedPlayer::State;

constexpr qsizetype longestLoggingName = 6;
constexpr double earlyEnd = 0.09;
constexpr Clock::Duration drowsy = 1s;  // how long the picture of a waking television lasts
constexpr Clock::Duration timeToWake = 2500ms;

bool isRequest(const QVariantMap& message) {
    return message.value(u"kind"_s) == u"request"_s &&
           message.value(u"messageID"_s).typeId() == QMetaType::LongLong;
}

QVariantMap answerTo(const QVariantMap& message) {
    return {{u"type"_s, message.value(u"type"_s)},
            {u"kind"_s, u"response"_s},
            {u"messageID"_s, message.value(u"messageID"_s)}};
}

}  // namespace

const QList<QueueVerbs::Route> QueueVerbs::routes{
    {"insertPlayQueueItem", &QueueVerbs::insert},
    {"setProperty", &QueueVerbs::setProperty},
    {"setRate", &QueueVerbs::setRate},
    {"seek", &QueueVerbs::seek},
    {"playbackInfo", &QueueVerbs::playbackInfo},
    {"property", &QueueVerbs::property},
    {"stop", &QueueVerbs::stop},
    {"removePlayQueueItem", &QueueVerbs::remove},
};

QueueVerbs::QueueVerbs(Context& context, EventPort& events, const QHostAddress& sender, QObject* parent)
    : QObject(parent), context_(context), events_(events), sender_(sender) {
    connect(&context.player, &SimulatedPlayer::stateChanged, this, &QueueVerbs::tell);
    connect(&context.player, &SimulatedPlayer::failed, this, &QueueVerbs::tellFailure);
}

QueueVerbs::~QueueVerbs() {
    context_.player.disconnect(this);
    if (started_ && !context_.does(Misbehaviour::playsOn)) context_.player.stop();
}

int QueueVerbs::answer(const Request& request) {
    const auto message = readCommand(request);
    if (!message) {
        context_.complain(message.error());
        return 400;
    }
    const QString type = message->value(u"type"_s).toString();
    const bool isItem = type == "insertPlayQueueItem"_L1;
    if (isItem && failures_++ < int(context_.numberOf(Misbehaviour::failsPlay))) return 500;
    QString wrong = u"of an unknown type"_s;
    for (const Route& route : routes)
        if (type == QLatin1StringView(route.type)) wrong = (this->*route.verb)(*message);
    if (!wrong.isEmpty()) context_.complain(u"/command %1: %2"_s.arg(type, wrong));
    const QVariantMap named = message->value(u"item"_s).toMap();
    return named.value(u"playerLoggingID"_s).toString().size() > longestLoggingName ? 0 : 200;
}

QString QueueVerbs::insert(const QVariantMap& message) {
    const QVariantMap item = message.value(u"item"_s).toMap();
    auto movie = readItem(item, sender_);
    if (!movie) return movie.error();
    if (item.value(u"playerLoggingID"_s).toString().size() > longestLoggingName)
        return u"a playerLoggingID of more than 6 characters"_s;
    if (movie_) return u"a second item while the first is there"_s;
    const bool startsThere = !context_.options.isApples() && !context_.options.isComputer();
    if (!startsThere || !item.contains(u"Start-Position"_s)) movie->startSeconds = 0;
    movie_ = *movie;
    return {};
}

QString QueueVerbs::setProperty(const QVariantMap& message) {
    const QString name = message.value(u"property"_s).toString();
    const QVariant value = message.value(u"value"_s);
    if (!movie_) return u"no item yet"_s;
    if (message.contains(u"item"_s) && !namesItem(message)) return u"another item"_s;
    if (name == "isInterestedInDateRange"_L1) {
        if (value.typeId() != QMetaType::Bool || !namesItem(message))
            return u"isInterestedInDateRange is no boolean, or names no item"_s;
    } else if (name == "actionAtItemEnd"_L1) {
        if (value.typeId() != QMetaType::LongLong || value.toInt() != 1)
            return u"actionAtItemEnd is not the integer 1"_s;
    } else if (name == "selectedMediaArray"_L1) {
        if (value.typeId() != QMetaType::QVariantList) return u"selectedMediaArray is no array"_s;
    } else {
        return u"an unknown property “%1”"_s.arg(name);
    }
    properties_.append(name);
    return {};
}

QString QueueVerbs::setRate(const QVariantMap& message) {
    const QVariant rate = message.value(u"rate"_s);
    if (rate.typeId() != QMetaType::Double) return u"a rate that is not real"_s;
    if (!movie_) return u"no item yet"_s;
    if (started_) {
        context_.player.setRate(rate.toDouble());
        return {};
    }
    const bool isComplete =
        properties_.contains(u"isInterestedInDateRange"_s) && properties_.contains(u"actionAtItemEnd"_s);
    start(rate.toDouble());
    return isComplete ? QString() : u"before the item's two properties"_s;
}

void QueueVerbs::start(double rate) {
    started_ = true;
    Q_EMIT started();
    if (context_.does(Misbehaviour::liesInEvents)) tellState(u"playing"_s);
    if (context_.does(Misbehaviour::ignoresPlay)) return;
    movie_->paused = rate == 0;
    context_.player.load(*movie_);
}

QString QueueVerbs::seek(const QVariantMap& message) {
    const auto time = readTime(message.value(u"time"_s));
    if (!isRequest(message) || !time || !namesItem(message)) return u"no time, item or messageID"_s;
    for (const QString& tolerance : {u"toleranceBefore"_s, u"toleranceAfter"_s})
        if (readTime(message.value(tolerance)) != 0.0) return tolerance + u" is not a time of 0"_s;
    if (context_.options.isApples()) return {};  // takes no notice: it is steered by remote control
    context_.player.seek(*time);
    QVariantMap answer = answerTo(message);
    answer.insert(u"position"_s, timeFrom(*time));
    events_.send(answer);
    return {};
}

QString QueueVerbs::playbackInfo(const QVariantMap& message) {
    if (!isRequest(message)) return u"no request with an integer messageID"_s;
    QVariantMap answer = answerTo(message);
    answer.insert(u"info"_s, info());
    events_.send(answer);
    return {};
}

QString QueueVerbs::property(const QVariantMap& message) {
    if (!isRequest(message) || message.value(u"property"_s).toString().isEmpty())
        return u"no request for a property with an integer messageID"_s;
    events_.send(answerTo(message));
    return {};
}

QString QueueVerbs::stop(const QVariantMap& /*message*/) {
    if (started_) context_.player.stop();
    movie_.reset();
    started_ = hasPlayed_ = false;
    return {};
}

QString QueueVerbs::remove(const QVariantMap& message) {
    if (!namesItem(message)) return u"another item"_s;
    return stop(message);
}

void QueueVerbs::tell(State state, const QString& reason) {
    if (!started_ || !movie_) return;
    if (state == State::playing) {
        context_.lastDuration = context_.player.duration();
        tellState(u"playing"_s, info());
        if (!std::exchange(hasPlayed_, true)) playedFirst();
    } else if (state != State::idle) {
        tellState(SimulatedPlayer::eventName(state), info());
    } else if (reason == "ended"_L1) {
        tellEnd();
    } else if (reason == "interrupted"_L1 || reason == "left"_L1) {
        Q_EMIT left();
    } else if (reason != "failed"_L1) {
        tellState(u"stopped"_s);
    }
}

void QueueVerbs::playedFirst() {
    events_.sendOddities();
    const bool isAwake = context_.awake && context_.clock.now() - context_.woken >= timeToWake;
    if (context_.does(Misbehaviour::sleeps) && !isAwake)
        dozing_ = context_.clock.after(drowsy, [this] { context_.player.setRate(0); });
}

void QueueVerbs::tellEnd() {
    const int variant = context_.does(Misbehaviour::ends) ? int(context_.numberOf(Misbehaviour::ends)) : 1;
    if (variant == 1) {
        events_.send(
            {{u"type"_s, u"notification"_s}, {u"name"_s, u"itemPlayedToEnd"_s}, {u"item"_s, item()}});
    } else if (variant == 2) {
        tellState(u"stopped"_s, {{u"reason"_s, u"ended"_s}});
    } else {
        tellState(u"stopped"_s, {{u"position"_s, timeFrom(context_.lastDuration - earlyEnd)},
                                 {u"duration"_s, timeFrom(context_.lastDuration)}});
    }
}

/// In either of the two places where receivers put it.
void QueueVerbs::tellState(const QString& state, const QVariantMap& more) {
    const bool lies = context_.does(Misbehaviour::liesInEvents);
    const QString told = lies ? u"playing"_s : state;
    QVariantMap event{{u"type"_s, u"playbackState"_s}, {u"item"_s, item()}};
    if (context_.options.isApples()) {
        event.insert(more);
        event.insert(u"name"_s, told);
    } else {
        QVariantMap params = more;
        params.insert(u"playbackState"_s, told);
        event.insert(u"params"_s, params);
        if (more.contains(u"reason"_s)) event.insert(u"reason"_s, more.value(u"reason"_s));
    }
    events_.send(event);
}

void QueueVerbs::tellFailure(const QString& /*reason*/) {
    if (!started_ || !movie_) return;
    constexpr int notPlayable = -12847;
    events_.send(
        {{u"type"_s, u"error"_s},
         {u"uuid"_s, movie_->uuid},
         {u"error"_s, QVariantMap{{u"domain"_s, u"CoreMediaErrorDomain"_s}, {u"code"_s, notPlayable}}}});
}

QVariantMap QueueVerbs::info() const {
    const SimulatedPlayer& player = context_.player;
    const QVariantMap range{{u"start"_s, timeFrom(0)}, {u"duration"_s, timeFrom(player.duration())}};
    QVariantMap info{{u"playbackState"_s, SimulatedPlayer::eventName(player.state())},
                     {u"rate"_s, player.rate()},
                     {u"readyToPlay"_s, player.isReady()},
                     {u"item"_s, item()}};
    if (!player.isReady()) return info;
    info.insert(u"position"_s, timeFrom(player.reportedPosition()));
    info.insert(u"duration"_s, timeFrom(player.duration()));
    info.insert(u"seekableTimeRanges"_s, QVariantList{range});
    return info;
}

QVariantMap QueueVerbs::item() const {
    return {{u"uuid"_s, movie_ ? movie_->uuid : QString()}};
}

bool QueueVerbs::namesItem(const QVariantMap& message) const {
    return movie_ && message.value(u"item"_s).toMap().value(u"uuid"_s) == movie_->uuid;
}

}  // namespace velmora::test
