#include "Sender/SettingsVault.h"

#include "System/Preferences.h"

namespace velmora {

void SettingsVault::read(const QString& name, Read read) {
    const auto value = values_.value(name);
    read(value ? Answer::done : Answer::absent, value.value_or(QVariant()).toString().toUtf8());
}

void SettingsVault::write(const QString& name, const QByteArray& secret, Done done) {
    values_.set(name, QString::fromUtf8(secret));
    values_.synchronize();
    done(Answer::done);
}

void SettingsVault::remove(const QString& name, Done done) {
    const bool isThere = values_.value(name).has_value();
    if (isThere) {
        values_.remove(name);
        values_.synchronize();
    }
    done(isThere ? Answer::done : Answer::absent);
}

}  // namespace velmora
