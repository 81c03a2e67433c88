#include "Interface/Application/CommandModel.h"

#include <QCoreApplication>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Commands)
};

/// As it stands on the keyboard.
QString keyName(const QString& key) {
    if (key == u"Left"_s) return u"←"_s;
    if (key == u"Right"_s) return u"→"_s;
    if (key == u"Ctrl"_s) return Texts::tr("Ctrl");
    if (key == u"Shift"_s) return Texts::tr("Shift");
    return key == u"Space"_s ? Texts::tr("Space") : key;
}

QString shortcutText(const QKeySequence& shortcut) {
    QStringList keys = shortcut.toString(QKeySequence::PortableText).split(u'+', Qt::SkipEmptyParts);
    for (QString& key : keys) key = keyName(key);
    return keys.join(u'+');
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
