#pragma once

#include "Sender/SecretVault.h"

namespace velmora {

class Preferences;

/// Keeps secrets among stored values, which should be in a file of their own that only the user can read.
class SettingsVault : public SecretVault {
  public:
    /// `values` must outlive it.
    explicit SettingsVault(Preferences& values) : values_(values) {}

    void read(const QString& name, Read read) override;
    void write(const QString& name, const QByteArray& secret, Done done) override;
    void remove(const QString& name, Done done) override;

  private:
    Preferences& values_;
};

}  // namespace velmora
