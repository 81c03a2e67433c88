#pragma once

#include "Television/Context.h"

#include <optional>

namespace velmora::test {

/// Asks for the television's password, on one connection.
class PasswordGuard {
  public:
    explicit PasswordGuard(Context& context) : context_(context) {}

    /// The 401 to answer instead, while the sender has not shown that it knows the password. On a plain
    /// connection once is enough; in a session every request has to show it.
    [[nodiscard]] std::optional<Response> challenge(const Request& request, bool sealed);

  private:
    [[nodiscard]] bool isRight(const Request& request) const;
    [[nodiscard]] Response freshChallenge();

    Context& context_;
    QByteArray nonce_;
    bool passed_ = false;
};

}  // namespace velmora::test
