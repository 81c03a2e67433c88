#pragma once

#include "Diagnostics/Log.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

namespace velmora::test {

using namespace Qt::StringLiterals;

/// What the program's log gets from now on.
class LoggedLines {
  public:
    LoggedLines() {
        Diagnostics::setStandardErrorFallback(false);
        (void)take();
    }

    /// The messages since the last call, without time; errors begin with "[error] ".
    [[nodiscard]] QStringList take() {
        logger().finish();
        QFile file(qEnvironmentVariable("XDG_STATE_HOME") + u"/Logs/Velmora/velmora.log"_s);
        if (!file.open(QIODevice::ReadOnly) || !file.seek(read_)) return {};
        QString text = QString::fromUtf8(file.readAll());
        read_ = file.pos();
        static const QRegularExpression prefix(uR"(^\S+ (\[notice\] )?)"_s,
                                               QRegularExpression::MultilineOption);
        return text.remove(prefix).split(u'\n', Qt::SkipEmptyParts);
    }

  private:
    qint64 read_ = 0;
};

}  // namespace velmora::test
