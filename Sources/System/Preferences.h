#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace velmora {

/// The user's stored values by key (any text, file paths among them). Values are text, numbers or booleans.
/// Main thread only. Never fails: what cannot be read is absent, what cannot be written is lost with a log
/// line.
class Preferences {
  public:
    Preferences() = default;
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;
    virtual ~Preferences() = default;

    [[nodiscard]] virtual std::optional<QVariant> value(const QString& key) const = 0;
    virtual void set(const QString& key, const QVariant& value) = 0;
    virtual void remove(const QString& key) = 0;
    [[nodiscard]] virtual QStringList keys() const = 0;

    /// Returns once everything set before is on disk, or has failed to get there.
    virtual void synchronize() = 0;
};

}  // namespace velmora
