#pragma once

#include "Sender/Message.h"

#include <QHostAddress>

#include <optional>

namespace velmora::test {

/// What the requests of one connection have to look like, whatever they ask for.
class RequestRules {
  public:
    /// `sender` is the address at the connection's other end.
    explicit RequestRules(const QHostAddress& sender) : sender_(sender) {}

    /// From now on the rules of the encrypted session hold.
    void seal() { sealed_ = true; }

    /// What is wrong with it; empty if nothing is.
    [[nodiscard]] QString complaint(const Request& request);

    /// `X-Apple-Session-ID` as last sent.
    [[nodiscard]] const QByteArray& session() const { return session_; }

  private:
    [[nodiscard]] QString plainComplaint(const Request& request) const;
    [[nodiscard]] QString sealedComplaint(const Request& request);
    [[nodiscard]] QString identityComplaint(const Headers& headers);
    [[nodiscard]] QString targetComplaint(const Request& request);
    [[nodiscard]] QString numberComplaint(const Request& request);

    QHostAddress sender_;
    bool sealed_ = false;
    QByteArray session_;
    QByteArray target_;
    QByteArray remote_;  // DACP-ID and Active-Remote
    std::optional<quint32> number_;
};

/// Whether a text is a UUID of 36 characters, in upper case.
[[nodiscard]] bool isUpperUuid(const QString& text);

}  // namespace velmora::test
