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
#include <utility>

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

void apply(const QHash<QString, QJsonValue>& changes, QJsonObject& values) {
    for (auto [key, value] : changes.asKeyValueRange()) values.insert(key, value);
}

}  // namespace

SettingsFile::SettingsFile(const QString& domain)
    : path_(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/velmora/"_s +
            domain + u".json"_s) {
    writeSoon_.setSingleShot(true);
    QObject::connect(&writeSoon_, &QTimer::timeout, &writeSoon_, [this] { startWriting(); });
}

SettingsFile::~SettingsFile() {
    SettingsFile::synchronize();
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
    for (const Changes* changes : {&changes_, &writing_}) {
        const auto changed = changes->constFind(key);
        if (changed != changes->cend()) return *changed;
    }
    refresh();
    return stored_.values.value(key);
}

QStringList SettingsFile::keys() const {
    refresh();
    QJsonObject merged = stored_.values;
    apply(writing_, merged);
    apply(changes_, merged);
    return merged.keys();
}

void SettingsFile::refresh() const {
    const Stamp onDisk = stampOnDisk(path_);
    if (onDisk == stored_.stamp) return;
    auto values = read(path_);
    if (!values && values.error() == ReadFailure::damaged) {
        // By the time the lock is ours, another process may have put a sound file there.
        QLockFile lock(lockPath(path_));
        const bool locked = lock.tryLock(lockPatience);
        values = read(path_);
        if (locked && !values && values.error() == ReadFailure::damaged) setAside(path_);
        if (!locked) logger().error(u"settings: %1 is damaged and in use"_s.arg(path_));
    }
    stored_ = {values.value_or(QJsonObject()), onDisk};
}

void SettingsFile::synchronize() {
    endWriting();
    // What came after it, or did not get there.
    startWriting();
    endWriting();
}

void SettingsFile::startWriting() {
    if (writer_.joinable()) return;
    writeSoon_.stop();
    if (changes_.isEmpty()) return;
    writing_ = std::exchange(changes_, {});
    writer_ = std::jthread([this, number = ++writes_, path = path_, changes = writing_] {
        written_ = write(path, changes);
        const auto tell = [this, number] {
            if (number == writes_) endWriting();
        };
        QMetaObject::invokeMethod(&writeSoon_, tell, Qt::QueuedConnection);
    });
}

/// Waits for the writer, if there is one, and takes what it brings.
void SettingsFile::endWriting() {
    if (!writer_.joinable()) return;
    writer_.join();
    Changes written = std::exchange(writing_, {});
    if (written_) {
        stored_ = *written_;
        if (!changes_.isEmpty()) writeSoon_.start(0);
    } else {
        // They go with the next change, which may fare better.
        written.insert(std::exchange(changes_, {}));
        changes_ = std::move(written);
        if (!complained_)
            logger().error(u"settings: %1 cannot be saved: %2; they last until the program ends"_s.arg(
                path_, written_.error()));
    }
    complained_ = !written_;
}

void SettingsFile::setAside(const QString& path) {
    const QString damaged = path + u".damaged"_s;
    if (std::rename(QFile::encodeName(path).constData(), QFile::encodeName(damaged).constData()) == 0)
        logger().error(u"settings: %1 is damaged; it is now %2"_s.arg(path, damaged));
    else
        logger().error(u"settings: %1 is damaged and cannot be set aside"_s.arg(path));
}

std::expected<QJsonObject, SettingsFile::ReadFailure> SettingsFile::read(const QString& path) {
    QFile file(path);
    if (!file.exists()) return std::unexpected(ReadFailure::missing);
    if (!file.open(QIODevice::ReadOnly)) return std::unexpected(ReadFailure::unreadable);
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) return std::unexpected(ReadFailure::unreadable);
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) return std::unexpected(ReadFailure::damaged);
    return document.object();
}

SettingsFile::Stamp SettingsFile::stampOnDisk(const QString& path) {
    struct stat status{};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) return {};
    return {static_cast<qint64>(status.st_dev), static_cast<qint64>(status.st_ino), status.st_size,
            status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec};
}

std::expected<SettingsFile::Stored, QString> SettingsFile::write(const QString& path,
                                                                 const Changes& changes) {
    QDir().mkpath(QFileInfo(path).path());
    QLockFile lock(lockPath(path));
    if (!lock.tryLock(lockPatience)) return std::unexpected(reasonFor(lock));

    const auto values = read(path);
    if (!values && values.error() == ReadFailure::unreadable)
        return std::unexpected(u"its present contents cannot be read"_s);
    if (!values && values.error() == ReadFailure::damaged) setAside(path);
    Stored stored{values.value_or(QJsonObject()), {}};
    apply(changes, stored.values);
    if (const auto replaced = replace(path, stored.values); !replaced)
        return std::unexpected(replaced.error());
    stored.stamp = stampOnDisk(path);
    return stored;
}

std::expected<void, QString> SettingsFile::replace(const QString& path, const QJsonObject& values) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return std::unexpected(file.errorString());
    // What somebody watches is nobody else's business.
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(QJsonDocument(values).toJson());
    if (!file.commit()) return std::unexpected(file.errorString());
    return {};
}

}  // namespace velmora
