#include "Receiver/KodiReceiver.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>

#include <unistd.h>

namespace velmora::test {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 40'000;  // milliseconds

QByteArray outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return process.readAllStandardOutput();
}

}  // namespace

QString KodiReceiver::whatIsMissing() {
    if (QDir(u"/usr/lib"_s).entryList({u"*-linux-gnu"_s}).filter(u"x86_64"_s).isEmpty() ||
        QDir(u"/usr/lib/x86_64-linux-gnu/kodi"_s).entryList({u"kodi.bin"_s}).isEmpty())
        return u"Kodi is not installed"_s;
    for (const QString& tool : {u"Xvfb"_s, u"pulseaudio"_s, u"ip"_s, u"curl"_s, u"import"_s, u"convert"_s,
                                u"avahi-daemon"_s, u"dbus-daemon"_s})
        if (QStandardPaths::findExecutable(tool).isEmpty()) return u"there is no %1"_s.arg(tool);
    return geteuid() == 0 ? QString() : u"network namespaces want root"_s;
}

KodiReceiver::KodiReceiver(const QString& password) {
    script_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    script_.start(QStringLiteral(KODI_RECEIVER), {u"start"_s, u"--name"_s, shownName.toString(),
                                                  u"--password"_s, password, u"--announce"_s});
    QByteArray said;
    while (said.count('\n') < 2 && script_.waitForReadyRead(patience))
        said += script_.readAllStandardOutput();
    const QList<QByteArray> lines = said.split('\n');
    if (lines.size() < 3) return;
    address_ = QString::fromUtf8(lines[0]);
    directory_ = QString::fromUtf8(lines[1]);
}

KodiReceiver::~KodiReceiver() {
    script_.closeWriteChannel();
    script_.waitForFinished();
}

void KodiReceiver::tell(const QByteArray& command) {
    script_.write(command + '\n');
    while (!script_.canReadLine() && script_.waitForReadyRead(patience)) {
    }
    (void)script_.readLine();
}

void KodiReceiver::stop() const {
    (void)ask(u"Player.Stop"_s, R"({"playerid": 1})");
}

QJsonValue KodiReceiver::ask(const QString& method, const QByteArray& parameters) const {
    const QByteArray answer = outputOf(QStringLiteral(KODI_RECEIVER),
                                       {u"rpc"_s, directory_, method, QString::fromUtf8(parameters)});
    return QJsonDocument::fromJson(answer).object().value(u"result"_s);
}

bool KodiReceiver::isPlaying() const {
    return !ask(u"Player.GetActivePlayers"_s, "{}").toArray().isEmpty();
}

QJsonObject KodiReceiver::player() const {
    return ask(u"Player.GetProperties"_s,
               R"({"playerid": 1, "properties": ["time", "speed", "currentaudiostream", "subtitleenabled",
                   "currentsubtitle"]})")
        .toObject();
}

double KodiReceiver::position() const {
    const QJsonObject time = player().value(u"time"_s).toObject();
    const auto part = [&time](QLatin1StringView name) { return time.value(name).toDouble(); };
    return part("hours"_L1) * 3600 + part("minutes"_L1) * 60 + part("seconds"_L1) +
           part("milliseconds"_L1) / 1000;
}

QString KodiReceiver::languages() const {
    const QJsonObject now = player();
    const auto language = [&now](QLatin1StringView kind) {
        return now.value(kind).toObject().value(u"language"_s).toString();
    };
    const bool hasText = now.value(u"subtitleenabled"_s).toBool();
    return language("currentaudiostream"_L1) + u' ' + (hasText ? language("currentsubtitle"_L1) : u"-"_s);
}

void KodiReceiver::showSubtitles(bool on) const {
    (void)ask(u"Player.SetSubtitle"_s,
              R"({"playerid": 1, "subtitle": ")" + QByteArray(on ? "on" : "off") + "\"}");
}

double KodiReceiver::whiteBelow(const QString& screenshot) const {
    (void)outputOf(QStringLiteral(KODI_RECEIVER), {u"screenshot"_s, directory_, screenshot});
    const QByteArray mean = outputOf(
        u"convert"_s, {screenshot, u"-gravity"_s, u"south"_s, u"-crop"_s, u"100%x33%+0+0"_s, u"-colorspace"_s,
                       u"gray"_s, u"-threshold"_s, u"85%"_s, u"-format"_s, u"%[fx:mean]"_s, u"info:"_s});
    return mean.toDouble();
}

}  // namespace velmora::test
