#pragma once

#include "Interface/Application/Commands.h"
#include "Interface/Views/MenuRow.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace velmora {

/// A window's commands, kept as its session is, for its menu and its keys. Main thread only.
class CommandModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")

  public:
    enum Role { shortcutRole = Qt::UserRole, availableRole, repeatsRole, yieldsToPopupsRole };

    using Read = std::function<CommandContext()>;
    using Run = std::function<void(Command)>;

    CommandModel(Read read, Run run, QObject* parent = nullptr);

    /// What the commands depend on may be different now.
    void refresh();

    [[nodiscard]] const QList<CommandRow>& rows() const { return rows_; }
    /// The rows of the menu; each but the lines has its number as its identifier.
    [[nodiscard]] QList<MenuRow> menu() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// Runs the command of this row, unless it is disabled by now.
    Q_INVOKABLE void trigger(int row);

  Q_SIGNALS:
    /// Some row is different.
    void refreshed();

  private:
    Read read_;
    Run run_;
    QList<CommandRow> rows_;
};

}  // namespace velmora
