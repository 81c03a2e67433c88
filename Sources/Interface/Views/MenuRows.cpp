#include "Interface/Views/MenuRows.h"

#include <algorithm>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

bool canBePointedAt(const MenuRow& row) {
    return row.kind == MenuRow::Kind::choice;
}

QString kindName(MenuRow::Kind kind) {
    switch (kind) {
        case MenuRow::Kind::choice:
            return u"choice"_s;
        case MenuRow::Kind::heading:
            return u"heading"_s;
        case MenuRow::Kind::line:
            return u"line"_s;
    }
    return {};
}

// The name of the sign's symbol.
QString signName(MenuRow::Sign sign) {
    switch (sign) {
        case MenuRow::Sign::none:
            return {};
        case MenuRow::Sign::chosen:
            return u"check"_s;
        case MenuRow::Sign::locked:
            return u"lock"_s;
        case MenuRow::Sign::busy:
            return u"busy"_s;
    }
    return {};
}

}  // namespace

void MenuRows::show(const QList<MenuRow>& rows) {
    if (rows == rows_) return;
    removeMissing(rows);
    for (int position = 0; position < rows.size(); ++position) insertOrChange(position, rows[position]);
    Q_EMIT shown();
}

void MenuRows::removeMissing(const QList<MenuRow>& rows) {
    for (int position = static_cast<int>(rows_.size()) - 1; position >= 0; --position) {
        const auto kept = std::ranges::find(rows, rows_[position].identifier, &MenuRow::identifier);
        if (kept != rows.end()) continue;
        beginRemoveRows({}, position, position);
        rows_.removeAt(position);
        endRemoveRows();
    }
}

void MenuRows::insertOrChange(int position, const MenuRow& row) {
    const auto found = std::ranges::find(rows_, row.identifier, &MenuRow::identifier);
    const int old = static_cast<int>(found - rows_.begin());
    if (found == rows_.end()) {
        beginInsertRows({}, position, position);
        rows_.insert(position, row);
        endInsertRows();
        return;
    }
    if (old != position) {
        beginMoveRows({}, old, old, {}, position);
        rows_.move(old, position);
        endMoveRows();
    }
    if (rows_[position] == row) return;
    rows_[position] = row;
    Q_EMIT dataChanged(index(position), index(position));
}

bool MenuRows::hasSymbols() const {
    return std::ranges::any_of(
        rows_, [](const MenuRow& row) { return !row.symbol.isEmpty() || row.sign != MenuRow::Sign::none; });
}

int MenuRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant MenuRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const MenuRow& row = rows_[index.row()];
    switch (role) {
        case kind:
            return kindName(row.kind);
        case Qt::DisplayRole:
        case text:
            return row.text;
        case detail:
            return row.detail;
        case symbol:
            return row.symbol;
        case keys:
            return row.keys;
        case sign:
            return signName(row.sign);
        case canChoose:
            return row.canChoose;
        case canForget:
            return row.canForget;
        default:
            return {};
    }
}

QHash<int, QByteArray> MenuRows::roleNames() const {
    return {{kind, "kind"}, {text, "text"}, {detail, "detail"},       {symbol, "symbol"},
            {keys, "keys"}, {sign, "sign"}, {canChoose, "canChoose"}, {canForget, "canForget"}};
}

bool MenuRows::accepts(int row) const {
    return row >= 0 && row < rows_.size() && rows_[row].canChoose;
}

void MenuRows::choose(int row) {
    if (accepts(row)) Q_EMIT chosen(rows_[row].identifier);
}

void MenuRows::forget(int row) {
    if (row >= 0 && row < rows_.size() && rows_[row].canForget) Q_EMIT forgotten(rows_[row].identifier);
}

int MenuRows::next(int row, int step) const {
    for (int candidate = row + step; candidate >= 0 && candidate < rows_.size(); candidate += step)
        if (canBePointedAt(rows_[candidate])) return candidate;
    return row;
}

int MenuRows::current() const {
    for (const MenuRow::Sign wanted : {MenuRow::Sign::chosen, MenuRow::Sign::busy}) {
        const auto found = std::ranges::find(rows_, wanted, &MenuRow::sign);
        if (found != rows_.end()) return static_cast<int>(found - rows_.begin());
    }
    return first();
}

int MenuRows::startingWith(const QString& prefix) const {
    const auto found = std::ranges::find_if(rows_, [&prefix](const MenuRow& row) {
        return canBePointedAt(row) && row.text.startsWith(prefix, Qt::CaseInsensitive);
    });
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

}  // namespace velmora
