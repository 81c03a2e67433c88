#include "Television/Television.h"

#include "Sender/Plist.h"
#include "Support/Seconds.h"

#include <QPointer>
#include <QTime>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using State = SimulatedPlayer::State;

constexpr Clock::Duration timeToLeave = std::chrono::seconds(2);

QString clockFace(double seconds) {
    return QTime(0, 0).addMSecs(int(seconds * 1000)).toString(u"h:mm:ss"_s);
}

}  // namespace

Television::Television(Clock& clock, const Options& options, QObject* parent)
    : QObject(parent),
      clock_(clock),
      options_(options.completed()),
      player_(clock, options_.misbehaviours),
      context_{.clock = clock,
               .options = options_,
               .player = player_,
               .complain = [this](const QString& reason) { complain(reason); },
               .say = [this](const QString& line) { Q_EMIT said(line); },
               .awake = !options_.does(Misbehaviour::sleeps)},
      pairings_(context_),
      verbs_(context_) {
    connect(&server_, &QTcpServer::newConnection, this, &Television::accept);
    connect(&player_, &SimulatedPlayer::stateChanged, this, &Television::tell);
    connect(&player_, &SimulatedPlayer::failed, this, &Television::complain);
    connect(&verbs_, &PlayVerbs::taken, this, &Television::misbehaveAfterPlay);
}

Television::~Television() {
    player_.disconnect(this);
    guests_.clear();
    qDeleteAll(findChildren<Guest*>());  // those that have left too: they use what is about to go
}

std::expected<void, QString> Television::listen() {
    if (!server_.listen(options_.address, options_.port)) return std::unexpected(server_.errorString());
    if (!options_.publish) return {};
    publication_ = std::make_unique<Publication>(options_, server_.serverPort());
    connect(publication_.get(), &Publication::said, this, &Television::said);
    if (!publication_->failure().isEmpty()) return std::unexpected(publication_->failure());
    return {};
}

Receiver Television::receiver() const {
    Receiver receiver;
    receiver.name = options_.name;
    receiver.address = server_.serverAddress();
    receiver.port = server_.serverPort();
    receiver.identifier = receiver.address.toString() + ':'_L1 + QString::number(receiver.port);
    receiver.model = options_.model;
    receiver.announced = TxtRecord::parse(announcement(options_));
    return receiver;
}

int Television::unansweredEvents() const {
    int count = 0;
    for (const Guest* guest : guests_) count += guest->unansweredEvents();
    return count;
}

void Television::accept() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        auto* guest = new Guest(context_, pairings_, verbs_, socket, this);
        guests_.append(guest);
        if (silent_) guest->fallSilent();
        connect(guest, &Guest::left, this, [=, this] { left(guest); });
        connect(guest, &Guest::requested, this,
                [this](const Request& request) { requests_.append(request.method + ' ' + request.target); });
    }
}

void Television::left(Guest* guest) {
    if (!guests_.removeOne(guest)) return;
    guest->deleteLater();
    if (guest->session() && guest->session()->isForRemote()) checkOrderSoon();
    verbs_.leave(guest);
}

/// After the session for remote control has gone: the movie's goes first, or with it. One that comes
/// meanwhile is another sender's, or the next movie's.
void Television::checkOrderSoon() {
    QList<QPointer<Guest>> left;
    for (Guest* guest : std::as_const(guests_))
        if (guest->session() && guest->session()->hasMovie()) left.append(guest);
    checking_ = clock_.after(timeToLeave, [this, left] {
        const auto isThere = [this](Guest* guest) { return guest && guests_.contains(guest); };
        if (std::ranges::any_of(left, isThere)) complain(u"the remote control left before the movie"_s);
    });
}

void Television::misbehaveAfterPlay() {
    if (options_.does(Misbehaviour::drops))
        dropping_ = clock_.after(seconds(options_.numberOf(Misbehaviour::drops)), [this] {
            for (Guest* guest : QList(guests_)) guest->abort();
        });
    if (options_.does(Misbehaviour::goesSilent))
        falling_ = clock_.after(seconds(options_.numberOf(Misbehaviour::goesSilent)), [this] {
            silent_ = true;
            for (Guest* guest : guests_) guest->fallSilent();
        });
    if (options_.does(Misbehaviour::liesInEvents)) sendEvent(u"playing"_s, {});
}

void Television::tell(State state, const QString& reason) {
    QString line = SimulatedPlayer::eventName(state);
    if (state == State::loading) line += ' '_L1 + player_.movie().url.toString();
    if (state == State::playing || state == State::paused)
        line += u" at %1 of %2"_s.arg(clockFace(player_.position()), clockFace(player_.duration()));
    if (!reason.isEmpty()) line += u" (%1)"_s.arg(reason);
    Q_EMIT said(line);
    const bool isTold = reason == "ended"_L1 || reason == "interrupted"_L1;
    sendEvent(options_.does(Misbehaviour::liesInEvents) ? u"playing"_s : SimulatedPlayer::eventName(state),
              isTold ? reason : QString());
}

/// On the reversed connections.
void Television::sendEvent(const QString& state, const QString& reason) {
    if (silent_) return;
    QVariantMap body{{u"category"_s, u"video"_s}, {u"sessionID"_s, 1}, {u"state"_s, state}};
    if (!reason.isEmpty()) body.insert(u"reason"_s, reason);
    for (Guest* guest : guests_) guest->sendEvent(Plist::encodeXml(body));
}

void Television::complain(const QString& reason) {
    complaints_.append(reason);
    Q_EMIT said(u"refused: "_s + reason);
}

}  // namespace velmora::test
