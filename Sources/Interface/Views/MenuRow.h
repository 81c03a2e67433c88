#pragma once

#include <QString>

namespace velmora {

/// One row of a menu: a heading, a line between groups, or something to choose.
struct MenuRow {
    enum class Kind { choice, heading, line };
    enum class Sign { none, chosen, locked, busy };

    Kind kind = Kind::choice;
    QString identifier;  ///< unique in its menu
    QString text;
    QString detail{};  ///< a second, quieter line
    QString symbol{};  ///< before the text
    QString keys{};    ///< the shortcut, for display
    Sign sign = Sign::none;
    bool canChoose = true;
    bool canForget = false;  ///< offers to be taken off the menu for good

    friend bool operator==(const MenuRow&, const MenuRow&) = default;

    [[nodiscard]] static MenuRow heading(const QString& identifier, const QString& text) {
        return {.kind = Kind::heading, .identifier = identifier, .text = text, .canChoose = false};
    }
    [[nodiscard]] static MenuRow line(const QString& identifier) {
        return {.kind = Kind::line, .identifier = identifier, .text = {}, .canChoose = false};
    }
};

}  // namespace velmora
