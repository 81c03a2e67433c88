#include "Sender/CredentialStore.h"

#include "Diagnostics/Log.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/SettingsVault.h"

#ifdef VELMORA_KEYRING
#include "Sender/KeyringVault.h"
#endif

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

using Answer = SecretVault::Answer;

namespace {

constexpr Clock::Duration keyringPatience = 60s;

std::unique_ptr<SecretVault> desktopKeyring() {
#ifdef VELMORA_KEYRING
    return std::make_unique<KeyringVault>();
#else
    return nullptr;
#endif
}

}  // namespace

struct CredentialStore::Places : std::enable_shared_from_this<Places> {
    std::unique_ptr<SecretVault> keyring;
    std::unique_ptr<SecretVault> file;
    QHash<QString, Credentials> current;     // as read or written last
    QHash<QString, Clock::Timer> deadlines;  // of readings

    void read(const QString& identifier, const std::function<void(const Credentials&)>& done);
    void write(const QString& identifier, const QByteArray& secret);
    void remove(const QString& identifier) const;
    void readFile(const QString& identifier, const std::function<void(const Credentials&)>& done) const;
};

CredentialStore::CredentialStore(Clock& clock, std::unique_ptr<SecretVault> keyring,
                                 std::unique_ptr<SecretVault> file)
    : places_(std::make_shared<Places>()), clock_(clock) {
    places_->keyring = std::move(keyring);
    places_->file = std::move(file);
}

CredentialStore::CredentialStore(Clock& clock, Preferences& file)
    : CredentialStore(clock, desktopKeyring(), std::make_unique<SettingsVault>(file)) {}

Completion<Credentials> CredentialStore::load(const QString& identifier) {
    const Completion<Credentials> loaded;
    const auto current = places_->current.constFind(identifier);
    if (current != places_->current.cend()) {
        loaded.complete(*current);
        return loaded;
    }
    const auto take = [loaded, identifier, weak = std::weak_ptr(places_)](const Credentials& credentials) {
        const auto places = weak.lock();
        // What was saved meanwhile is newer.
        if (places && !places->current.contains(identifier)) places->current.insert(identifier, credentials);
        loaded.complete(places ? places->current.value(identifier) : credentials);
    };
    places_->deadlines[identifier] =
        clock_.after(keyringPatience, [identifier, take, weak = std::weak_ptr(places_)] {
            if (const auto places = weak.lock()) places->readFile(identifier, take);
        });
    places_->read(identifier,
                  [take, identifier, weak = std::weak_ptr(places_)](const Credentials& credentials) {
                      if (const auto places = weak.lock()) places->deadlines.remove(identifier);
                      take(credentials);
                  });
    return loaded;
}

void CredentialStore::save(const QString& identifier, const Credentials& credentials) {
    if (credentials.isEmpty()) return forget(identifier);
    places_->current.insert(identifier, credentials);
    places_->write(identifier, credentials.encoded());
}

void CredentialStore::forget(const QString& identifier) {
    places_->current.insert(identifier, {});
    places_->remove(identifier);
}

void CredentialStore::Places::read(const QString& identifier,
                                   const std::function<void(const Credentials&)>& done) {
    if (!keyring) return readFile(identifier, done);
    keyring->read(identifier, [identifier, done, weak = weak_from_this()](Answer answer, const auto& secret) {
        if (answer == Answer::done) return done(Credentials::decoded(secret));
        if (const auto self = weak.lock()) self->readFile(identifier, done);
    });
}

void CredentialStore::Places::readFile(const QString& identifier,
                                       const std::function<void(const Credentials&)>& done) const {
    file->read(identifier, [done](Answer, const QByteArray& secret) { done(Credentials::decoded(secret)); });
}

void CredentialStore::Places::write(const QString& identifier, const QByteArray& secret) {
    const auto ignore = [](Answer) {};
    if (!keyring) return file->write(identifier, secret, ignore);
    keyring->write(identifier, secret, [identifier, secret, ignore, weak = weak_from_this()](Answer answer) {
        const auto self = weak.lock();
        if (!self) return;
        if (answer == Answer::done) return self->file->remove(identifier, ignore);
        // Forgotten or replaced while the keyring made up its mind.
        if (self->current.value(identifier).encoded() != secret) return;
        logger().notice(u"credentials: no keyring, keeping them in a file"_s);
        self->file->write(identifier, secret, ignore);
    });
}

void CredentialStore::Places::remove(const QString& identifier) const {
    const auto ignore = [](Answer) {};
    if (keyring) keyring->remove(identifier, ignore);
    file->remove(identifier, ignore);
}

void ReceiverMemory::forget(const QString& identifier) const {
    if (credentials) credentials->forget(identifier);
    if (known) known->forget(identifier);
}

}  // namespace velmora
