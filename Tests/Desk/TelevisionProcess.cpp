#include "Desk/TelevisionProcess.h"

#include "Desk/Desk.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Support/WaitFor.h"

namespace velmora::test {

using namespace Qt::StringLiterals;

TelevisionProcess::TelevisionProcess(const QString& name, const QStringList& options) : name_(name) {
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.start(QStringLiteral(VELMORA_TELEVISION), QStringList{u"--name"_s, name} + options);
    const QString listening = u"listening on "_s;
    if (says(listening)) port_ = lines_[seen_ - 1].sliced(listening.size()).toUShort();
}

void TelevisionProcess::readMore() {
    while (process_.canReadLine()) lines_ << QString::fromUtf8(process_.readLine()).trimmed();
}

QStringList TelevisionProcess::lines() {
    readMore();
    return lines_;
}

bool TelevisionProcess::says(const QString& beginning) {
    qsizetype found = -1;
    (void)waitFor([&] {
        readMore();
        for (qsizetype line = seen_; line < lines_.size() && found < 0; ++line)
            if (lines_[line].startsWith(beginning)) found = line;
        return found >= 0 || process_.state() == QProcess::NotRunning;
    });
    if (found >= 0) seen_ = found + 1;
    return found >= 0;
}

void TelevisionProcess::rememberOn(const Desk& desk) const {
    desk.withPreferences([this](Preferences& preferences) {
        Receiver receiver = Receiver::fromText(address()).value();
        receiver.name = name_;
        KnownReceivers(preferences).remember(receiver);
    });
}

}  // namespace velmora::test
