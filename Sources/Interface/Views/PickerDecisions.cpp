#include "Interface/Views/PickerDecisions.h"

#include "Companions/Durations.h"

#include <QCoreApplication>

#include <algorithm>

namespace velmora::PickerDecisions {

using namespace Qt::StringLiterals;

namespace {

const QString televisionPrefix = u"tv:"_s;

QString tr(const char* text) {
    return QCoreApplication::translate("velmora::PickerDecisions", text);
}

QString asSentence(QString text) {
    if (!text.isEmpty()) text[0] = text[0].toUpper();
    return text;
}

QString detail(const Television& television, int secondsToWait) {
    if (!television.cannotShow.isEmpty()) return asSentence(television.cannotShow);
    if (secondsToWait > 0) return tr("Refused. Next try in %1").arg(Durations::clockTime(secondsToWait));
    if (television.activity == Television::Activity::waking) return tr("Waking…");
    if (television.activity == Television::Activity::connecting) return tr("Connecting…");
    if (television.isAway) return tr("Not seen on the network");
    if (television.asks == Television::Asks::code) return tr("Asks for a code");
    return television.asks == Television::Asks::password ? tr("Asks for a password") : QString();
}

MenuRow::Sign sign(const Television& television, bool isChosen) {
    if (television.activity != Television::Activity::none) return MenuRow::Sign::busy;
    if (isChosen) return MenuRow::Sign::chosen;
    return television.asks == Television::Asks::nothing ? MenuRow::Sign::none : MenuRow::Sign::locked;
}

MenuRow row(const Television& television, const Routes& routes) {
    const int secondsToWait = secondsUntil(television.nextTry, routes.now);
    const bool isUsable = television.cannotShow.isEmpty() && secondsToWait == 0;
    return {.identifier = televisionPrefix + television.identifier,
            .text = television.name,
            .detail = detail(television, secondsToWait),
            .symbol = u"tv"_s,
            .sign = isUsable ? sign(television, routes.chosen == television.identifier) : MenuRow::Sign::none,
            .canChoose = isUsable,
            .canForget = television.canForget};
}

// A television that was chosen stays on the menu when the network no longer tells of it.
QList<Television> shown(const Routes& routes) {
    QList<Television> all = routes.televisions;
    const auto isChosen = [&routes](const Television& one) { return routes.chosen == one.identifier; };
    if (routes.chosen && std::ranges::none_of(all, isChosen))
        all.append({.identifier = *routes.chosen,
                    .name = routes.chosenName.value_or(*routes.chosen),
                    .isAway = true});
    return all;
}

MenuRow nothingFound(const Routes& routes) {
    MenuRow row{.identifier = u"none"_s, .text = tr("Looking for televisions…"), .symbol = u"tv"_s};
    row.canChoose = false;
    if (!routes.unavailableReason.isEmpty()) {
        row.text = tr("No television found");
        row.detail = routes.unavailableReason;
    } else if (routes.hasLookedLong) {
        row.text = tr("No television found");
    } else {
        row.sign = MenuRow::Sign::busy;
    }
    return row;
}

}  // namespace

int secondsUntil(const std::optional<Clock::Instant>& instant, Clock::Instant now) {
    if (!instant || *instant <= now) return 0;
    return static_cast<int>(std::chrono::ceil<std::chrono::seconds>(*instant - now).count());
}

QStringList order(const Routes& routes) {
    QList<Television> televisions = shown(routes);
    const auto comesBefore = [&routes](const Television& one, const Television& other) {
        const auto place = [&routes](const Television& television) {
            const qsizetype index = routes.order.indexOf(television.identifier);
            return index < 0 ? routes.order.size() : index;
        };
        const auto rank = [&place](const Television& television) {
            return std::pair(place(television), !television.cannotShow.isEmpty());
        };
        if (rank(one) != rank(other)) return rank(one) < rank(other);
        return QString::localeAwareCompare(one.name.toCaseFolded(), other.name.toCaseFolded()) < 0;
    };
    std::ranges::stable_sort(televisions, comesBefore);
    QStringList identifiers;
    for (const Television& television : televisions) identifiers.append(television.identifier);
    return identifiers;
}

QList<MenuRow> rows(const Routes& routes) {
    QList<MenuRow> rows{{.identifier = thisComputer,
                         .text = tr("This computer"),
                         .symbol = u"computer"_s,
                         .sign = routes.chosen ? MenuRow::Sign::none : MenuRow::Sign::chosen}};
    const QList<Television> televisions = shown(routes);
    for (const QString& identifier : order(routes))
        rows.append(row(*std::ranges::find(televisions, identifier, &Television::identifier), routes));
    if (televisions.isEmpty()) rows.append(nothingFound(routes));
    return rows;
}

std::optional<QString> televisionOf(const QString& rowIdentifier) {
    if (!rowIdentifier.startsWith(televisionPrefix)) return std::nullopt;
    return rowIdentifier.sliced(televisionPrefix.size());
}

QuestionTexts question(const TelevisionQuestion& question, Clock::Instant now) {
    const bool isCode = question.asks == Television::Asks::code;
    const int secondsToWait = secondsUntil(question.nextTry, now);
    QuestionTexts texts{
        .title = (isCode ? tr("Enter the code for %1") : tr("Password for %1")).arg(question.television),
        .text = isCode ? tr("Type the four digits shown on the television.")
                       : tr("This television asks for a password."),
        .error = {},
        .canAnswer = !question.nextTry && !question.isChecking};
    if (question.wasWrong)
        texts.error = isCode ? tr("That code didn't match.") : tr("That password didn't match.");
    if (secondsToWait > 0) {
        const QString wait = tr("Try again in %1.").arg(Durations::clockTime(secondsToWait));
        texts.error = texts.error.isEmpty() ? wait : texts.error + u' ' + wait;
    }
    return texts;
}

QString dismissed(const TelevisionQuestion& question) {
    const bool isCode = question.asks == Television::Asks::code;
    return (isCode ? tr("Not sent to %1: it asks for a code") : tr("Not sent to %1: it asks for a password"))
        .arg(question.television);
}

}  // namespace velmora::PickerDecisions
