#pragma once

#include "System/Preferences.h"

#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QTimer>

#include <array>
#include <expected>

namespace velmora {

/// The preferences of one domain, in a JSON file of their own: `velmora/<domain>.json` in the user's
/// configuration folder. Numbers come back as doubles.
///
/// Changes reach the disk from the event loop, at `synchronize`, and when the object goes. Any number of
/// processes may use one domain at once: a write replaces only the keys changed here in what the file holds
/// by then, and a read sees what the others wrote. A file that is no JSON object is renamed to `.damaged` and
/// forgotten. Where nothing can be written, the values last as long as the object, with one log line.
class SettingsFile : public Preferences {
  public:
    /// `domain` names the file, as in "com.quillet.velmora".
    explicit SettingsFile(const QString& domain);
    ~SettingsFile() override;

    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override;
    void set(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;
    [[nodiscard]] QStringList keys() const override;
    void synchronize() override;

    [[nodiscard]] const QString& path() const { return path_; }

  private:
    enum class ReadFailure { missing, damaged, unreadable };
    /// Device, inode, size and time of change: together they differ whenever the file was replaced.
    using Stamp = std::array<qint64, 4>;

    void change(const QString& key, const QJsonValue& value);
    [[nodiscard]] QJsonValue current(const QString& key) const;
    void refresh() const;
    void setAside() const;
    [[nodiscard]] std::expected<QJsonObject, ReadFailure> read() const;
    [[nodiscard]] Stamp stampOnDisk() const;
    [[nodiscard]] std::expected<void, QString> write();
    [[nodiscard]] std::expected<void, QString> replaceFile(const QJsonObject& values) const;

    QString path_;
    QTimer writeSoon_;
    QHash<QString, QJsonValue> changes_;  ///< not on disk yet; an undefined value is a removal
    mutable QJsonObject stored_;          ///< what the file held when it was last read
    mutable Stamp stamp_{};
    bool complained_ = false;
};

}  // namespace velmora
