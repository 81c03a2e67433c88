#pragma once

#include <QMetaType>
#include <QString>

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
    };

    Kind kind = Kind::closed;
    int status = 0;
    QString detail{};  ///< for the log

    [[nodiscard]] bool hasStatus(int code) const { return kind == Kind::status && status == code; }
};

}  // namespace velmora
