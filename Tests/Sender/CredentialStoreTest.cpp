#include "Sender/CredentialStore.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/SettingsVault.h"
#include "Support/ScriptedSystem.h"
#include "Support/VirtualClock.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Answer = SecretVault::Answer;

/// A keyring that is there, is not, or has its user think about it.
class Keyring : public SecretVault {
  public:
    enum class Mood { ready, gone, silent };
    struct Place {
        Mood mood = Mood::ready;
        QMap<QString, QByteArray> secrets;
    };
    explicit Keyring(Place& place) : place_(place) {}

    void read(const QString& name, Read read) override {
        answer([&] { read(has(name), place_.secrets.value(name)); }, [&] { read(Answer::unavailable, {}); });
    }
    void write(const QString& name, const QByteArray& secret, Done done) override {
        answer([&] { place_.secrets.insert(name, secret), done(Answer::done); },
               [&] { done(Answer::unavailable); });
    }
    void remove(const QString& name, Done done) override {
        answer([&] { place_.secrets.remove(name), done(Answer::done); }, [&] { done(Answer::unavailable); });
    }

  private:
    [[nodiscard]] Answer has(const QString& name) const {
        return place_.secrets.contains(name) ? Answer::done : Answer::absent;
    }
    void answer(const auto& ready, const auto& gone) const {
        if (place_.mood == Mood::ready) ready();
        if (place_.mood == Mood::gone) gone();
    }
    Place& place_;
};

class CredentialStoreTest : public testing::Test {
  protected:
    CredentialStore store() {
        return {clock, std::make_unique<Keyring>(keyring), std::make_unique<SettingsVault>(file)};
    }
    /// What another start of the program finds; nothing while it waits.
    std::optional<Credentials> found(CredentialStore& from) {
        const Completion<Credentials> loading = from.load(identifier);
        if (!loading.isComplete()) clock.advance(59s);
        EXPECT_EQ(loading.isComplete(), keyring.mood != Keyring::Mood::silent);
        clock.advance(2s);
        return loading.isComplete() ? std::optional(loading.await_resume()) : std::nullopt;
    }
    static Credentials sample() {
        return {HapCredentials{makeHapIdentity(), {"02:AA", QByteArray(32, 't')}},
                LegacyCredentials{makeLegacyIdentity(), QByteArray(32, 'l')}, u"geheim ☂"_s};
    }

    const QString identifier = u"02:00:00:00:00:01"_s;
    test::VirtualClock clock;
    Keyring::Place keyring;
    test::MapPreferences file;
};

TEST_F(CredentialStoreTest, KeepsThemInTheKeyringOrElseInTheFile) {
    const Credentials credentials = sample();
    for (const auto mood : {Keyring::Mood::gone, Keyring::Mood::silent, Keyring::Mood::ready}) {
        keyring.mood = mood;
        CredentialStore written = store();
        written.save(identifier, credentials);
        EXPECT_EQ(written.load(identifier).await_resume().encoded(), credentials.encoded());
        CredentialStore read = store();
        const auto again = found(read);
        ASSERT_TRUE(again);
        EXPECT_EQ(again->encoded(), credentials.encoded());
        EXPECT_EQ(file.values.isEmpty(), mood == Keyring::Mood::ready);
    }
    test::MapPreferences values;
    KnownReceivers known(values);
    known.remember({.name = u"tv"_s, .identifier = identifier, .port = 7000, .host = u"tv.example"_s});
    CredentialStore forgetful = store();
    ReceiverMemory{&forgetful, &known}.forget(identifier);
    EXPECT_TRUE(keyring.secrets.isEmpty());
    EXPECT_TRUE(known.receivers().isEmpty());
    EXPECT_TRUE(forgetful.load(identifier).await_resume().isEmpty());
}

TEST_F(CredentialStoreTest, LeavesOutWhatMakesNoSense) {
    const QByteArray whole = sample().encoded();
    for (const char* damage : {"", "[]", "{\"pairing\":7}", "\"theirKey\":\"ff"}) {
        QByteArray text = damage;
        if (text.startsWith('"')) text = QByteArray(whole).replace("\"theirKey\":\"", text);
        const Credentials credentials = Credentials::decoded(text);
        EXPECT_FALSE(credentials.pairing || credentials.legacyPairing) << damage;
    }
    EXPECT_EQ(Credentials::decoded(whole).encoded(), whole);
}

}  // namespace
}  // namespace velmora
