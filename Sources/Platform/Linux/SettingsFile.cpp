#include "Platform/Linux/SettingsFile.h"

#include "Diagnostics/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>

#include <sys/stat.h>

#include <chrono>
#include <cstdio>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A write takes milliseconds; a process that holds the lock longer is stuck, and nobody waits for it.
constexpr std::chrono::milliseconds lockPatience = 1s;

QString lockPath(const QString& path) {
    return path + u".lock"_s;
}

QString reasonFor(const QLockFile& lock) {
    return lock.error() == QLockFile::LockFailedError ? u"another process keeps it locked"_s
                                                      : u"the folder cannot be written"_s;
}

}  // namespace

SettingsFile::SettingsFile(const QString& domain)
    : path_(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/velmora/"_s +
            domain + u".json"_s) {
    writeSoon_.setSingleShot(true);
    QObject::connect(&writeSoon_, &QTimer::timeout, &writeSoon_, [this] { synchronize(); });
}

SettingsFile::~SettingsFile() {
    synchronize();
}

std::optional<QVariant> SettingsFile::value(const QString& key) const {
    const QJsonValue found = current(key);
    switch (found.type()) {
        case QJsonValue::String:
            return found.toString();
        case QJsonValue::Bool:
            return found.toBool();
        case QJsonValue::Double:
            return found.toDouble();
        default:
            return std::nullopt;
    }
}

void SettingsFile::set(const QString& key, const QVariant& value) {
    const QJsonValue converted = QJsonValue::fromVariant(value);
    if (!converted.isString() && !converted.isBool() && !converted.isDouble()) {
        logger().error(u"settings: the value for %1 is neither text, number nor boolean"_s.arg(key));
        return;
    }
    change(key, converted);
}

void SettingsFile::remove(const QString& key) {
    change(key, QJsonValue(QJsonValue::Undefined));
}

void SettingsFile::change(const QString& key, const QJsonValue& value) {
    if (current(key) == value) return;
    changes_.insert(key, value);
    writeSoon_.start(0);
}

QJsonValue SettingsFile::current(const QString& key) const {
    const auto changed = changes_.constFind(key);
    if (changed != changes_.cend()) return *changed;
    refresh();
    return stored_.value(key);
}

QStringList SettingsFile::keys() const {
    refresh();
    QJsonObject merged = stored_;
    for (auto [key, value] : changes_.asKeyValueRange()) merged.insert(key, value);
    return merged.keys();
}

void SettingsFile::refresh() const {
    const Stamp onDisk = stampOnDisk();
    if (onDisk == stamp_) return;
    stamp_ = onDisk;
    auto values = read();
    if (!values && values.error() == ReadFailure::damaged) {
        // By the time the lock is ours, another process may have put a sound file there.
        QLockFile lock(lockPath(path_));
        const bool locked = lock.tryLock(lockPatience);
        values = read();
        if (locked && !values && values.error() == ReadFailure::damaged) setAside();
        if (!locked) logger().error(u"settings: %1 is damaged and in use"_s.arg(path_));
    }
    stored_ = values.value_or(QJsonObject());
}

void SettingsFile::setAside() const {
    const QString damaged = path_ + u".damaged"_s;
    if (std::rename(QFile::encodeName(path_).constData(), QFile::encodeName(damaged).constData()) == 0)
        logger().error(u"settings: %1 is damaged; it is now %2"_s.arg(path_, damaged));
    else
        logger().error(u"settings: %1 is damaged and cannot be set aside"_s.arg(path_));
}

std::expected<QJsonObject, SettingsFile::ReadFailure> SettingsFile::read() const {
    QFile file(path_);
    if (!file.exists()) return std::unexpected(ReadFailure::missing);
    if (!file.open(QIODevice::ReadOnly)) return std::unexpected(ReadFailure::unreadable);
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) return std::unexpected(ReadFailure::unreadable);
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) return std::unexpected(ReadFailure::damaged);
    return document.object();
}

SettingsFile::Stamp SettingsFile::stampOnDisk() const {
    struct stat status{};
    if (::stat(QFile::encodeName(path_).constData(), &status) != 0) return {};
    return {static_cast<qint64>(status.st_dev), static_cast<qint64>(status.st_ino), status.st_size,
            status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec};
}

void SettingsFile::synchronize() {
    writeSoon_.stop();
    if (changes_.isEmpty()) return;
    const auto written = write();
    if (!written && !complained_)
        logger().error(u"settings: %1 cannot be saved: %2; they last until the program ends"_s.arg(
            path_, written.error()));
    complained_ = !written;
}

std::expected<void, QString> SettingsFile::write() {
    QDir().mkpath(QFileInfo(path_).path());
    QLockFile lock(lockPath(path_));
    if (!lock.tryLock(lockPatience)) return std::unexpected(reasonFor(lock));

    auto values = read();
    if (!values && values.error() == ReadFailure::unreadable)
        return std::unexpected(u"its present contents cannot be read"_s);
    if (!values && values.error() == ReadFailure::damaged) setAside();
    QJsonObject merged = values.value_or(QJsonObject());
    for (auto [key, value] : changes_.asKeyValueRange()) merged.insert(key, value);

    if (const auto replaced = replaceFile(merged); !replaced) return replaced;
    stored_ = merged;
    stamp_ = stampOnDisk();
    changes_.clear();
    return {};
}

std::expected<void, QString> SettingsFile::replaceFile(const QJsonObject& values) const {
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) return std::unexpected(file.errorString());
    // What somebody watches is nobody else's business.
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(QJsonDocument(values).toJson());
    if (!file.commit()) return std::unexpected(file.errorString());
    return {};
}

}  // namespace velmora
