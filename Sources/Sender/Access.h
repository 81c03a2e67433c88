#pragma once

#include "Sender/Connection.h"
#include "Sender/Credentials.h"
#include "Sender/Dialer.h"
#include "Sender/Discovery/Flavour.h"

#include <QCoroTask>
#include <QString>

#include <memory>

namespace velmora {

class PairingMessenger;

/// The way into one receiver by one flavour: makes connections, and on each proves an old pairing or sets up
/// one that asks nobody for anything. Main thread only.
class Access : public std::enable_shared_from_this<Access> {
  public:
    /// No `std::expected`, for the reason that `Dialer::Dialed` has.
    struct Link {
        std::unique_ptr<Connection> connection;  ///< ready for commands; null: see `error`
        Secret shared;  ///< what the keys of further channels come from; empty unless it is encrypted
        ConnectionError error;
    };

    [[nodiscard]] static std::shared_ptr<Access> make(Clock& clock, const Receiver& receiver, Flavour flavour,
                                                      Credentials credentials);

    /// A new connection, trusted as the flavour asks: sealed for `transient` and `paired`. It answers the
    /// receiver's question for the password by itself. One call at a time.
    ///
    /// A proof that fails is given a second time, since receivers err in about one of two hundred. That is
    /// never a PIN, so it lengthens no pause.
    [[nodiscard]] QCoro::Task<Link> link();

    /// A bare connection to another port of the receiver, at the address that `link` found.
    [[nodiscard]] QCoro::Task<Dialer::Dialed> dial(quint16 port);

    /// Ends every wait with `closed`.
    void close();

    [[nodiscard]] QByteArray hostHeader() const { return dialer_->hostHeader(); }
    [[nodiscard]] const Receiver& receiver() const { return receiver_; }
    [[nodiscard]] Flavour flavour() const { return flavour_; }

  private:
    using Messenger = std::shared_ptr<PairingMessenger>;

    Access(Clock& clock, const Receiver& receiver, Flavour flavour, Credentials credentials);

    [[nodiscard]] QCoro::Task<Link> attempt(QString transientPassword);
    [[nodiscard]] QCoro::Task<Link> verify(Messenger messenger);
    [[nodiscard]] QCoro::Task<Link> setUpTransient(Messenger messenger, QString password);
    [[nodiscard]] QCoro::Task<Link> exchangeKeys(Messenger messenger);
    [[nodiscard]] QCoro::Task<Link> verifyLegacy(Messenger messenger, LegacyCredentials credentials);
    [[nodiscard]] Link ready(const Messenger& messenger) const;
    [[nodiscard]] Link sealed(const Messenger& messenger, const Secret& shared) const;
    [[nodiscard]] bool mayHaveErred(const ConnectionError& error) const;

    Clock& clock_;
    Receiver receiver_;
    Flavour flavour_;
    Credentials credentials_;
    std::shared_ptr<Dialer> dialer_;
    Messenger messenger_;  // while a connection is not ready yet
    bool closed_ = false;
};

}  // namespace velmora
