#include "Companions/Title.h"

#include "Companions/Names.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace velmora::Title {
namespace {

/// The lead up to the first year behind a blank or an opening bracket. The year must end its word; what makes
/// up words is listed because \b of this engine knows no combining marks. (*ANY): a name may hold line breaks
/// of any kind, and the lead crosses none.
const QRegularExpression& leadAndYear() {
    static const QRegularExpression expression(
        uR"((*ANY)^(.+?)[\s(\[]+((?:19|20)\d\d)(?![\p{L}\p{M}\p{Nd}\p{Nl}\p{Pc}\p{Cf}]))"_s,
        QRegularExpression::UseUnicodePropertiesOption);
    return expression;
}

QString trimSeparators(const QString& lead) {
    static const QString separators = u" ([-"_s;
    qsizetype first = 0;
    qsizetype last = lead.size();
    while (first < last && separators.contains(lead.at(first))) ++first;
    while (last > first && separators.contains(lead.at(last - 1))) --last;
    return lead.mid(first, last - first);
}

}  // namespace

QString pretty(const QUrl& movie) {
    QString name = Names::stem(Names::fileName(movie));
    name.replace(u'_', u' ').replace(u'.', u' ');
    if (const QRegularExpressionMatch match = leadAndYear().match(name); match.hasMatch()) {
        const QString title = trimSeparators(name.left(match.capturedStart(2)));
        if (!title.isEmpty()) return u"%1 (%2)"_s.arg(title, match.captured(2));
    }
    return Names::trimBlanks(name);
}

}  // namespace velmora::Title
