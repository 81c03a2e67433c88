#pragma once

#include "Sender/Discovery/Flavour.h"

#include <QList>
#include <QString>

#include <optional>

namespace velmora {

class Preferences;

/// The receivers that were used before, the latest first, and what worked on each. Main thread only.
///
/// Kept as one text in the preferences; entries that make no sense there are left out.
class KnownReceivers {
  public:
    static constexpr qsizetype limit = 32;

    explicit KnownReceivers(Preferences& preferences) : preferences_(preferences) {}

    /// With the address they had last; none of them `announced`.
    [[nodiscard]] QList<Receiver> receivers() const;
    [[nodiscard]] std::optional<Capability> capability(const QString& identifier) const;

    /// Puts the receiver first. Without a capability, the one known so far stays.
    void remember(const Receiver& receiver, const std::optional<Capability>& capability = {});
    void forget(const QString& identifier);

  private:
    struct Entry;
    [[nodiscard]] QList<Entry> load() const;
    void store(const QList<Entry>& entries);

    Preferences& preferences_;
};

}  // namespace velmora
