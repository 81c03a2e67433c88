#include "Vectors.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace velmora::test {

namespace {

QJsonObject load() {
    QFile file(QStringLiteral(PAIRING_VECTORS));
    if (!file.open(QIODevice::ReadOnly)) qFatal("no vectors");
    return QJsonDocument::fromJson(file.readAll()).object();
}

}  // namespace

QByteArray textVector(const QByteArray& name) {
    static const QJsonObject all = load();
    const QJsonValue value = all.value(QString::fromLatin1(name));
    if (!value.isString()) qFatal("no vector %s", name.constData());
    return value.toString().toLatin1();
}

QByteArray vector(const QByteArray& name) {
    return QByteArray::fromHex(textVector(name));
}

Crypto::RandomSource scripted(std::initializer_list<const char*> names) {
    const auto rest = std::make_shared<QStringList>();
    for (const char* name : names) rest->append(QString::fromLatin1(name));
    return [rest](qsizetype size) {
        Secret bytes = secretVector(rest->takeFirst().toLatin1());
        Crypto::require(bytes.size() == size);
        return bytes;
    };
}

QByteArray sha256(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

}  // namespace velmora::test

void PrintTo(const QByteArray& bytes, std::ostream* stream) {
    *stream << bytes.size() << " bytes " << bytes.toHex().constData();
}
