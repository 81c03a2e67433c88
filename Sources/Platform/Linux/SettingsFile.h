#pragma once

#include "System/Preferences.h"

#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QTimer>

#include <array>
#include <expected>
#include <thread>

namespace velmora {

/// The preferences of one domain, in a JSON file of their own: `velmora/<domain>.json` in the user's
/// configuration folder. Numbers come back as doubles.
///
/// Changes reach the disk soon, on a thread of their own, since a disk may take its time; at `synchronize`
/// and when the object goes, the caller waits for it. Any number of processes may use one domain at once: a
/// write replaces only the keys changed here in what the file holds by then, and a read sees what the others
/// wrote. A file that is no JSON object is renamed to `.damaged` and forgotten. Where nothing can be written,
/// the values last as long as the object, with one log line.
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
    /// An undefined value is a removal.
    using Changes = QHash<QString, QJsonValue>;
    /// Device, inode, size and time of change: together they differ whenever the file was replaced.
    using Stamp = std::array<qint64, 4>;
    struct Stored {
        QJsonObject values;
        Stamp stamp;
    };
    enum class ReadFailure { missing, damaged, unreadable };

    void change(const QString& key, const QJsonValue& value);
    [[nodiscard]] QJsonValue current(const QString& key) const;
    void refresh() const;
    void startWriting();
    void endWriting();

    // With the file at a path, on any thread.
    static void setAside(const QString& path);
    [[nodiscard]] static std::expected<QJsonObject, ReadFailure> read(const QString& path);
    [[nodiscard]] static Stamp stampOnDisk(const QString& path);
    [[nodiscard]] static std::expected<Stored, QString> write(const QString& path, const Changes& changes);
    [[nodiscard]] static std::expected<void, QString> replace(const QString& path, const QJsonObject& values);

    QString path_;
    QTimer writeSoon_;
    Changes changes_;          ///< not on disk yet
    Changes writing_;          ///< on their way there
    mutable Stored stored_{};  ///< what the file held when it was last read
    quint64 writes_ = 0;
    std::expected<Stored, QString> written_;  ///< the writer's until it is joined
    std::jthread writer_;
    bool complained_ = false;
};

}  // namespace velmora
