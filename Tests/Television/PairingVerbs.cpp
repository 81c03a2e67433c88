#include "Television/PairingVerbs.h"

#include "Sender/Pairing/Tlv8.h"
#include "Sender/Plist.h"
#include "Television/Responses.h"

#include <array>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using Flavour = TelevisionOptions::Flavour;
using HapMessages::ErrorCode;
using Tlv8::Tag;

constexpr std::array<std::chrono::seconds, 5> pauses{1s, 16s, 32s, 64s, 64s};
const QByteArray pinPairing = "3";
const QByteArray transientPairing = "4";

/// 0 if it is no pairing message at all.
int stateOf(const QByteArray& body) {
    const auto items = Tlv8::parse(body);
    const auto state = items ? Tlv8::find(*items, Tag::state) : std::nullopt;
    return state && state->size() == 1 ? state->at(0) : 0;
}

bool fails(const QByteArray& answer) {
    const auto items = Tlv8::parse(answer);
    return !items || Tlv8::find(*items, Tag::error);
}

Response bytes(const QByteArray& body) {
    Response response;
    response.headers.append("Content-Type", "application/octet-stream");
    response.body = body;
    return response;
}

/// About the headers of a HomeKit pairing; empty if nothing is wrong.
QString headerComplaint(const Request& request, const QList<QByteArray>& kinds) {
    const Headers& headers = request.headers;
    if (headers.value("X-Apple-Client-Name").isEmpty()) return u"a pairing without X-Apple-Client-Name"_s;
    if (!kinds.contains(headers.value("X-Apple-HKP"))) return u"a pairing with another X-Apple-HKP"_s;
    const QByteArray type = headers.value("Content-Type");
    if (!request.body.isEmpty() && type != "application/octet-stream" && type != "application/pairing+tlv8")
        return u"a pairing of type “%1”"_s.arg(QLatin1StringView(type));
    return {};
}

}  // namespace

// Known from one run to the next: a sender remembers it.
Pairings::Pairings(Context& context)
    : context_(context),
      identity_{
          deviceIdentifier(context.options).toLatin1(),
          Crypto::digest(Crypto::Hash::sha512, {context.options.name.toUtf8()}).first(Crypto::keySize)} {}

void Pairings::forget() {
    sender.reset();
    legacySender.reset();
}

void Pairings::countWrongPin() {
    if (wrongPins_ < std::ssize(pauses))
        pausedUntil_ = context_.clock.now() + pauses[static_cast<std::size_t>(wrongPins_)];
    wrongPins_ += 1;
}

std::optional<std::chrono::seconds> Pairings::pause() const {
    if (wrongPins_ > std::ssize(pauses)) return std::nullopt;
    const auto rest = std::chrono::ceil<std::chrono::seconds>(pausedUntil_ - context_.clock.now());
    return wrongPins_ > 0 && rest > 0s ? rest : 0s;
}

bool Pairings::doubtPin() {
    return doubted_++ < int(context_.numberOf(Misbehaviour::doubtsPin));
}

bool PairingVerbs::takes(const Request& request) {
    const QList<QByteArray> paths{"/pair-pin-start", "/pair-setup", "/pair-setup-pin", "/pair-verify"};
    return request.method == "POST" && paths.contains(request.path());
}

Response PairingVerbs::answer(const Request& request) {
    const Flavour flavour = context_.options.flavour;
    const QByteArray path = request.path();
    if (path == "/pair-pin-start") return startPin(request);
    if (flavour == Flavour::legacyPin && path == "/pair-setup-pin") return setUpLegacyPin(request);
    if (flavour == Flavour::legacyKeys && path == "/pair-setup") return exchangeKeys(request.body);
    if (context_.options.isLegacy() && path == "/pair-verify") return verifyLegacy(request.body);
    if (context_.options.isEncrypted() && path == "/pair-setup") return setUp(request);
    if (context_.options.isEncrypted() && path == "/pair-verify") return verify(request);
    return response(context_.options.isEncrypted() ? 403 : 501);
}

bool PairingVerbs::wantsPin() const {
    return context_.options.flavour == Flavour::paired || context_.does(Misbehaviour::wantsPin);
}

Response PairingVerbs::startPin(const Request& request) {
    if (!request.body.isEmpty()) return blame(u"/pair-pin-start with a body"_s);
    if (context_.does(Misbehaviour::restricted)) return response(400);
    if (context_.options.isEncrypted() && wantsPin()) {
        const QString wrong = headerComplaint(request, {pinPairing});
        if (!wrong.isEmpty()) context_.complain(wrong);
        if (!wrong.isEmpty()) return response(200);  // and nothing is on the screen
    } else if (context_.options.flavour != Flavour::legacyPin) {
        return response(404);
    }
    pinShown_ = true;
    setup_.reset();
    context_.say(u"PIN "_s + context_.options.pin);
    return response(200);
}

Response PairingVerbs::setUp(const Request& request) {
    const QString wrong = headerComplaint(request, {pinPairing, transientPairing});
    if (!wrong.isEmpty()) return blame(wrong);
    if (stateOf(request.body) == 1) beginSetup();
    if (!setup_) return blame(u"a pairing that does not begin at its beginning"_s);
    const bool isTransient = request.headers.value("X-Apple-HKP") == transientPairing;
    if (stateOf(request.body) == 1 && isTransient != isTransientAttempt(request.body))
        return blame(u"X-Apple-HKP and flags that contradict each other"_s);
    return isTransient ? setUpTransient(request.body) : setUpPin(request.body);
}

void PairingVerbs::beginSetup() {
    setup_.emplace(pairings_.identity(), context_.options.pin);
    const auto pause = pairings_.pause();
    if (!pause) setup_->refuse(ErrorCode::maximumTries);
    if (pause && pause->count() > 0) setup_->refuse(ErrorCode::backOff, *pause);
}

bool PairingVerbs::isTransientAttempt(const QByteArray& body) const {
    const auto items = Tlv8::parse(body);
    const auto flags = items ? Tlv8::find(*items, Tag::flags) : std::nullopt;
    return flags && flags->startsWith(HapMessages::transientFlag);
}

Response PairingVerbs::setUpTransient(const QByteArray& body) {
    if (wantsPin()) return response(470);
    const Response answer = bytes(setup_->answer(body));
    if (setup_->transientKey()) shared_ = setup_->transientKey();
    return answer;
}

Response PairingVerbs::setUpPin(const QByteArray& body) {
    if (!wantsPin()) return response(403);
    if (!pinShown_) {
        context_.complain(u"a pairing with a PIN that was not asked for"_s);
        return response(470);
    }
    const int state = stateOf(body);
    const QByteArray answer = setup_->answer(body);
    if (state == 3 && fails(answer)) {
        context_.say(u"a wrong PIN"_s);
        pairings_.countWrongPin();
        pinShown_ = false;
    } else if (state == 3 && pairings_.doubtPin()) {
        return wrongPin();
    } else if (state == 5 && fails(answer)) {
        return blame(u"an introduction that cannot be believed"_s);
    }
    if (setup_->paired()) {
        pairings_.sender = setup_->paired();
        context_.say(u"paired"_s);
    }
    return bytes(answer);
}

Response PairingVerbs::verify(const Request& request) {
    const QString wrong = headerComplaint(request, {pinPairing});
    if (!wrong.isEmpty()) return blame(wrong);
    if (stateOf(request.body) == 1) verify_.emplace(pairings_.identity(), pairings_.sender);
    if (!verify_) return blame(u"a verification that does not begin at its beginning"_s);
    const QByteArray answer = verify_->answer(request.body);
    if (verify_->shared()) shared_ = verify_->shared();
    return bytes(answer);
}

Response PairingVerbs::exchangeKeys(const QByteArray& key) {
    if (key.size() != Crypto::keySize) return blame(u"a key that is not 32 bytes"_s);
    pairings_.legacySender = key;
    return bytes(pairings_.identity().publicKey());
}

Response PairingVerbs::setUpLegacyPin(const Request& request) {
    const QByteArray type = request.headers.value("Content-Type");
    const auto plist = Plist::decode(request.body);
    if (type != "application/x-apple-binary-plist" || !plist)
        return blame(u"a pairing that is no property list"_s);
    const QVariantMap body = plist->toMap();
    const auto data = [&](const QString& key) { return body.value(key).toByteArray(); };
    if (body.value(u"method"_s) == u"pin"_s) {
        if (!pinShown_) return wrongPin();
        legacySetup_.emplace(pairings_.identity().seed, context_.options.pin);
        const QString user = body.value(u"user"_s).toString();
        if (user.size() != 16) return blame(u"a user that is not 16 characters"_s);
        const auto challenge = legacySetup_->challenge(user.toLatin1());
        return binaryResponse({{u"pk"_s, challenge.pk}, {u"salt"_s, challenge.salt}});
    }
    if (!legacySetup_) return blame(u"a pairing that does not begin at its beginning"_s);
    if (body.contains(u"proof"_s)) {
        const auto proof = legacySetup_->check({data(u"pk"_s), data(u"proof"_s)});
        if (!proof || pairings_.doubtPin()) return wrongPin();
        return binaryResponse({{u"proof"_s, *proof}});
    }
    const auto sealed = legacySetup_->exchange({data(u"epk"_s), data(u"authTag"_s)});
    if (!sealed) return blame(u"a key that cannot be believed"_s);
    pairings_.legacySender = legacySetup_->paired();
    context_.say(u"paired"_s);
    return binaryResponse({{u"epk"_s, sealed->epk}, {u"authTag"_s, sealed->authTag}});
}

Response PairingVerbs::verifyLegacy(const QByteArray& body) {
    if (body.startsWith('\1')) {
        legacyVerify_.reset();
        if (!pairings_.legacySender) return response(470);
        legacyVerify_.emplace(pairings_.identity().seed, pairings_.legacySender);
    }
    const auto answer = legacyVerify_ ? legacyVerify_->answer(body) : std::nullopt;
    return answer ? bytes(*answer) : response(470);
}

Response PairingVerbs::wrongPin() {
    context_.say(u"a wrong PIN"_s);
    pinShown_ = false;
    setup_.reset();
    legacySetup_.reset();
    return response(470);
}

Response PairingVerbs::blame(const QString& reason) {
    context_.complain(reason);
    return response(400);
}

}  // namespace velmora::test
