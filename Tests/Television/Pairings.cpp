#include "Television/Pairings.h"

#include "Television/Announcement.h"

#include <array>

using namespace std::chrono_literals;

namespace velmora::test {

namespace {

constexpr std::array<std::chrono::seconds, 5> pauses{1s, 16s, 32s, 64s, 64s};

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

bool Pairings::strikes(Misbehaviour misbehaviour) {
    if (!context_.does(misbehaviour) || struck_[misbehaviour] >= int(context_.numberOf(misbehaviour)))
        return false;
    struck_[misbehaviour] += 1;
    return true;
}

}  // namespace velmora::test
