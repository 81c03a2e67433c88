#pragma once

#include "Interface/Views/MenuRow.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// The rows of a menu for a list view. Rows that stay the same row keep their delegates, and with them the
/// focus, when others come, go or change. Main thread only.
class MenuRows : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(bool hasSymbols READ hasSymbols NOTIFY shown FINAL)

  public:
    enum Role { kind = Qt::UserRole, text, detail, symbol, keys, sign, canChoose, canForget };
    Q_ENUM(Role)

    using QAbstractListModel::QAbstractListModel;

    void show(const QList<MenuRow>& rows);
    [[nodiscard]] const QList<MenuRow>& rows() const { return rows_; }
    /// Any row has a symbol or a tick, so all leave room for one.
    [[nodiscard]] bool hasSymbols() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// Whether it can be chosen.
    Q_INVOKABLE [[nodiscard]] bool accepts(int row) const;
    /// Without effect for what cannot be.
    Q_INVOKABLE void choose(int row);
    Q_INVOKABLE void forget(int row);

    /// The next row that can be pointed at, from `row` in steps of `step`; `row` itself when there is none.
    Q_INVOKABLE [[nodiscard]] int next(int row, int step) const;
    /// The first row that can be pointed at, and the last.
    Q_INVOKABLE [[nodiscard]] int first() const { return next(-1, 1); }
    Q_INVOKABLE [[nodiscard]] int last() const { return next(static_cast<int>(rows_.size()), -1); }
    /// The chosen row, else one that is busy, else the first.
    Q_INVOKABLE [[nodiscard]] int current() const;
    /// The row that begins with `prefix`, in any case; -1 when none does.
    Q_INVOKABLE [[nodiscard]] int startingWith(const QString& prefix) const;

  Q_SIGNALS:
    void shown();
    void chosen(const QString& identifier);
    void forgotten(const QString& identifier);

  private:
    void removeMissing(const QList<MenuRow>& rows);
    void insertOrChange(int position, const MenuRow& row);

    QList<MenuRow> rows_;
};

}  // namespace velmora
