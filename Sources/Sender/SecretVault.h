#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace velmora {

/// A place that keeps secrets by name. Main thread only; every call is answered once, maybe before it
/// returns, in the order of the calls.
class SecretVault {
  public:
    enum class Answer {
        done,
        absent,       ///< there is no secret of that name
        unavailable,  ///< the place does not answer, or refuses
    };
    using Read = std::function<void(Answer answer, const QByteArray& secret)>;
    using Done = std::function<void(Answer answer)>;

    SecretVault() = default;
    SecretVault(const SecretVault&) = delete;
    SecretVault& operator=(const SecretVault&) = delete;
    virtual ~SecretVault() = default;

    virtual void read(const QString& name, Read read) = 0;
    virtual void write(const QString& name, const QByteArray& secret, Done done) = 0;
    virtual void remove(const QString& name, Done done) = 0;
};

}  // namespace velmora
