#pragma once

#include "Sender/Credentials.h"
#include "Sender/SecretVault.h"
#include "System/Clock.h"
#include "System/Completion.h"

#include <QHash>
#include <QString>

#include <memory>

namespace velmora {

class KnownReceivers;
class Preferences;

/// The credentials for each receiver, by its identifier. Main thread only. Never fails: what cannot be read
/// is absent, what cannot be kept lasts until the program ends, with a log line.
///
/// They are in the keyring where one answers, else in the file; a secret that finds its way into the keyring
/// is removed from the file.
class CredentialStore {
  public:
    /// No keyring: null.
    CredentialStore(Clock& clock, std::unique_ptr<SecretVault> keyring, std::unique_ptr<SecretVault> file);
    /// With the desktop's keyring, where the build has it. `file`: stored values of their own, which must
    /// outlive the store.
    CredentialStore(Clock& clock, Preferences& file);

    /// Without an answer from the keyring within a minute (it may ask its user), as if it were not there.
    [[nodiscard]] Completion<Credentials> load(const QString& identifier);
    /// In the order of the calls, and seen by every `load` that follows.
    void save(const QString& identifier, const Credentials& credentials);
    /// From everywhere.
    void forget(const QString& identifier);

  private:
    struct Places;
    std::shared_ptr<Places> places_;  // answers may come later than the store's end
    Clock& clock_;
};

/// What is kept about receivers. Null: nothing. Both must outlive whoever uses them.
struct ReceiverMemory {
    CredentialStore* credentials = nullptr;
    KnownReceivers* known = nullptr;

    /// Wipes the receiver's secrets and that it was ever used.
    void forget(const QString& identifier) const;
};

}  // namespace velmora
