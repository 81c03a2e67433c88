#pragma once

#include "Sender/SecretVault.h"

namespace velmora {

/// The desktop's keyring. Where none runs, every call is answered `unavailable`.
class KeyringVault : public SecretVault {
  public:
    void read(const QString& name, Read read) override;
    void write(const QString& name, const QByteArray& secret, Done done) override;
    void remove(const QString& name, Done done) override;
};

}  // namespace velmora
