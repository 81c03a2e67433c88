#include "Companions/Names.h"

#include <QTextBoundaryFinder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora::Names {
namespace {

QString composed(const QString& text) {
    return text.normalized(QString::NormalizationForm_C);
}

/// Where the last extension's full stop stands, or -1. A leading full stop marks a hidden file, and what
/// follows the full stop of "Mr. Smith" is no extension.
qsizetype extensionDot(const QString& name) {
    const qsizetype dot = name.lastIndexOf(u'.');
    const bool isExtension = dot > 0 && dot + 1 < name.size() && name.indexOf(u' ', dot) < 0;
    return isExtension ? dot : -1;
}

/// The position behind the first `count` characters of `text`.
qsizetype positionAfter(const QString& text, qsizetype count) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype position = 0;
    for (qsizetype passed = 0; passed < count && position < text.size(); ++passed) {
        position = std::max(finder.toNextBoundary(), position + 1);
    }
    return std::min(position, text.size());
}

bool isBoundary(const QString& text, qsizetype position) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(position);
    return finder.isAtBoundary();
}

bool isBlank(QChar character) {
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

}  // namespace

QString fileName(const QUrl& file) {
    const QString path = file.adjusted(QUrl::StripTrailingSlash).toLocalFile();
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString stem(const QString& name) {
    return name.left(extensionDot(name));
}

QString extension(const QString& name) {
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? QString() : name.mid(dot + 1).toLower();
}

QStringList pieces(const QString& text) {
    static const QString separators = u".-_ []()"_s;
    const QString lowered = composed(text).toLower();
    QStringList result;
    qsizetype start = 0;
    for (qsizetype position = 0; position <= lowered.size(); ++position) {
        if (position < lowered.size() && !separators.contains(lowered.at(position))) continue;
        if (position > start) result.append(lowered.mid(start, position - start));
        start = position + 1;
    }
    return result;
}

bool beginsWith(const QString& name, const QString& prefix) {
    const QString lowered = composed(name).toLower();
    const QString loweredPrefix = composed(prefix).toLower();
    return lowered.startsWith(loweredPrefix) && isBoundary(lowered, loweredPrefix.size());
}

QString dropFirst(const QString& name, qsizetype count) {
    const QString text = composed(name);
    return text.mid(positionAfter(text, count));
}

QString first(const QString& text, qsizetype count) {
    return text.left(positionAfter(text, count));
}

qsizetype characterCount(const QString& text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, composed(text));
    qsizetype count = 0;
    while (finder.toNextBoundary() >= 0) ++count;
    return count;
}

QString trimBlanks(const QString& text) {
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    auto last = text.end();
    while (last != first && isBlank(*(last - 1))) --last;
    return QString(first, last - first);
}

}  // namespace velmora::Names
