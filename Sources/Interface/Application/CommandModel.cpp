#include "Interface/Application/CommandModel.h"

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// As on the keys: arrows as arrows.
QString shortcutText(const QKeySequence& shortcut) {
    QString text = shortcut.toString(QKeySequence::NativeText);
    return text.replace(u"Left"_s, u"←"_s).replace(u"Right"_s, u"→"_s);
}

}  // namespace

CommandModel::CommandModel(Read read, Run run, QObject* parent)
    : QAbstractListModel(parent),
      read_(std::move(read)),
      run_(std::move(run)),
      rows_(commandTable(read_())) {}

void CommandModel::refresh() {
    const QList<CommandRow> rows = commandTable(read_());
    if (rows == rows_) return;
    for (int row = 0; row < rows.size(); ++row) {
        if (rows_[row] == rows[row]) continue;
        rows_[row] = rows[row];
        Q_EMIT dataChanged(index(row), index(row));
    }
    Q_EMIT refreshed();
}

QList<MenuRow> CommandModel::menu() const {
    QList<MenuRow> menu;
    for (int row = 0; row < rows_.size(); ++row) {
        const QString number = QString::number(row);
        if (rows_[row].startsGroup) menu << MenuRow::line(u"line "_s + number);
        menu << MenuRow{.identifier = number,
                        .text = rows_[row].title,
                        .keys = shortcutText(rows_[row].shortcut),
                        .canChoose = rows_[row].isEnabled};
    }
    return menu;
}

int CommandModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant CommandModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const CommandRow& row = rows_[index.row()];
    switch (role) {
        case shortcutRole:
            return row.shortcut.toString(QKeySequence::PortableText);
        case availableRole:
            return row.isEnabled;
        case repeatsRole:
            return row.repeats;
        case yieldsToPopupsRole:
            return row.yieldsToPopups;
        default:
            return {};
    }
}

QHash<int, QByteArray> CommandModel::roleNames() const {
    return {{shortcutRole, "shortcut"},
            {availableRole, "available"},
            {repeatsRole, "repeats"},
            {yieldsToPopupsRole, "yieldsToPopups"}};
}

void CommandModel::trigger(int row) {
    if (row < 0 || row >= rows_.size()) return;
    refresh();  // the session may have gone on since the menu was drawn
    if (rows_[row].isEnabled) run_(rows_[row].command);
}

}  // namespace velmora
