#pragma once

#include "Sender/Discovery/Flavour.h"
#include "Sender/Pairing/PairingError.h"

#include <QMetaType>
#include <QString>

#include <optional>

namespace velmora {

/// What became of a connection, or of one request on it.
struct ConnectionError {
    enum class Kind {
        refused,      ///< the other side answers, but nothing listens there
        unreachable,  ///< no way to the address, or no such host
        timeout,      ///< no answer within the deadline
        closed,       ///< by the other side, by the network, or by us
        malformed,    ///< bytes that are no answer
        status,       ///< an answer that is not success: see `status`
        pairing,      ///< pairing, or the proof of an old one, did not work: see `pairing`
    };

    Kind kind = Kind::closed;
    int status = 0;
    QString detail{};                     ///< for the log
    std::optional<Answers::Step> step{};  ///< of getting the receiver ready, where it is known
    PairingError pairing{};
    QString explanation{};  ///< for the user, as whole sentences, where more is known than the kind tells

    [[nodiscard]] bool hasStatus(int code) const { return kind == Kind::status && status == code; }
};

}  // namespace velmora
