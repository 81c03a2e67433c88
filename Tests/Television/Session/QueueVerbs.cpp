#include "Television/Session/QueueVerbs.h"

#include "Sender/Plist.h"
#include "Television/RequestRules.h"

#include <QUrl>

#include <cmath>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using State = SimulatedPlayer::State;

constexpr qsizetype longestLoggingName = 6;
constexpr double earlyEnd = 0.09;
constexpr Clock::Duration drowsy = 1s;  // how long the picture of a waking television lasts
constexpr Clock::Duration timeToWake = 2500ms;

constexpr int timescale = 1000;
constexpr int valid = 1;

auto wrong(const QString& reason) {
    return std::unexpected(reason);
}

/// A length of time as the queue writes it.
QVariantMap timeFrom(double seconds) {
    return {{u"value"_s, qlonglong(std::llround(seconds * timescale))},
            {u"timescale"_s, timescale},
            {u"flags"_s, valid},
            {u"epoch"_s, 0}};
}

std::optional<double> readTime(const QVariant& time) {
    const QVariantMap map = time.toMap();
    for (const QString& key : {u"value"_s, u"timescale"_s, u"flags"_s, u"epoch"_s})
        if (map.value(key).typeId() != QMetaType::LongLong) return std::nullopt;
    const double scale = map.value(u"timescale"_s).toDouble();
    if (scale <= 0 || map.value(u"flags"_s).toInt() != valid || map.value(u"epoch"_s).toInt() != 0)
        return std::nullopt;
    return map.value(u"value"_s).toDouble() / scale;
}

/// What is inside the envelope of a `/command`, or what is wrong with the envelope.
std::expected<QVariantMap, QString> readCommand(const Request& request) {
    if (request.headers.value("X-Apple-StreamID").toInt() != queueStream)
        return wrong(u"/command for another stream"_s);
    if (request.headers.value("X-Apple-ProtocolVersion") != "1")
        return wrong(u"/command of another protocol version"_s);
    const QVariantMap body = Plist::decode(request.body).value_or(QVariant()).toMap();
    const QVariantMap params = body.value(u"params"_s).toMap();
    const QVariant data = params.value(u"data"_s);
    if (body.size() != 1 || params.size() != 1 || data.typeId() != QMetaType::QByteArray)
        return wrong(u"/command without its envelope"_s);
    if (!data.toByteArray().startsWith("bplist00")) return wrong(u"/command around no property list"_s);
    const auto inner = Plist::decode(data.toByteArray());
    if (!inner || inner->toMap().value(u"type"_s).toString().isEmpty())
        return wrong(u"/command without a type"_s);
    return inner->toMap();
}

/// The movie that an item names. `sender` is where it has to come from.
std::expected<SimulatedPlayer::Movie, QString> readItem(const QVariantMap& item, const QHostAddress& sender) {
    SimulatedPlayer::Movie movie;
    movie.uuid = item.value(u"uuid"_s).toString();
    movie.url = QUrl(item.value(u"Content-Location"_s).toString(), QUrl::StrictMode);
    if (!isUpperUuid(movie.uuid)) return wrong(u"an item without a uuid in upper case"_s);
    const QString type = item.value(u"mediaType"_s).toString();
    if (type != "file"_L1 && type != "streaming"_L1) return wrong(u"an item of another media type"_s);
    if (movie.url.scheme() != "http"_L1 || QHostAddress(movie.url.host()) != sender)
        return wrong(u"an item that is not at the sender's own address"_s);
    const QVariant seconds = item.value(u"Start-Position-Seconds"_s, 0.0);
    if (seconds.typeId() != QMetaType::Double) return wrong(u"Start-Position-Seconds that is not real"_s);
    movie.startSeconds = seconds.toDouble();
    if (!item.contains(u"Start-Position"_s)) return movie;
    const auto start = readTime(item.value(u"Start-Position"_s));
    if (!start) return wrong(u"Start-Position that is no time"_s);
    movie.startSeconds = *start;
    return movie;
}

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
    {"stop", &QueueVerbs::stop},
};

QueueVerbs::QueueVerbs(Context& context, EventPort& events, const QHostAddress& sender, QObject* parent)
    : QObject(parent), context_(context), events_(events), sender_(sender) {
    connect(&context.player, &SimulatedPlayer::stateChanged, this, &QueueVerbs::tell);
    connect(&context.player, &SimulatedPlayer::failed, this, &QueueVerbs::tellFailure);
}

QueueVerbs::~QueueVerbs() {
    context_.player.disconnect(this);
    if (started_) context_.player.stop();
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
    // Takes no notice: it is steered by remote control.
    if (context_.options.isApples() && !context_.does(Misbehaviour::mutesRemote)) return {};
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

QString QueueVerbs::stop(const QVariantMap& /*message*/) {
    if (started_) context_.player.stop();
    movie_.reset();
    started_ = hasPlayed_ = false;
    return {};
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
