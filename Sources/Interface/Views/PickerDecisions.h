#pragma once

#include "Interface/Views/MenuRow.h"
#include "Interface/Views/Televisions.h"

#include <QStringList>

/// What the route picker and its dialogs say. Pure functions; the texts are in the user's language.
namespace velmora::PickerDecisions {

inline const QString thisComputer = QStringLiteral("computer");

struct Routes {
    QList<Television> televisions;
    std::optional<QString> chosen;      ///< identifier; absent: this computer
    std::optional<QString> chosenName;  ///< shown when the chosen one is not among the televisions
    QString unavailableReason;
    bool hasLookedLong = false;  ///< long enough to say that there is none
    QStringList order;           ///< identifiers in the order shown so far; new ones come behind
    Clock::Instant now;
};

/// Identifiers in the order to show: those of `order` stay where they are, others follow by name, what
/// takes no video last.
[[nodiscard]] QStringList order(const Routes& routes);

/// This computer and the televisions. The rows of televisions carry their identifiers behind "tv:".
[[nodiscard]] QList<MenuRow> rows(const Routes& routes);
[[nodiscard]] std::optional<QString> televisionOf(const QString& rowIdentifier);

struct QuestionTexts {
    QString title;
    QString text;
    QString error;  ///< empty: none
    bool canAnswer = true;
};
[[nodiscard]] QuestionTexts question(const TelevisionQuestion& question, Clock::Instant now);
/// What is said where the question was given no answer.
[[nodiscard]] QString dismissed(const TelevisionQuestion& question);

/// Whole seconds until `instant`, rounded up; 0 when it is past or absent.
[[nodiscard]] int secondsUntil(const std::optional<Clock::Instant>& instant, Clock::Instant now);

}  // namespace velmora::PickerDecisions
