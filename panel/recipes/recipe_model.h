// A recipe as the rows of a table: controller, file and buffer side by side.
#ifndef DOV417_PANEL_RECIPE_MODEL_H
#define DOV417_PANEL_RECIPE_MODEL_H

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>

#include "panel/recipes/recipe_table.h"

namespace dov417 {

class RecipeModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        name,
        address,
        controller,
        age,
        file,
        buffer,
        comparison,
        outcome
    };
    static constexpr int columns = 8;

    explicit RecipeModel(RecipeTable& table);

    // To be called around whatever makes other rows, and after what changes values in them.
    template <typename Call>
    void makeAnew(Call call)
    {
        beginResetModel();
        try {
            call();
        } catch (...) {
            endResetModel();
            throw;
        }
        endResetModel();
    }
    void tellChanges();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Edits the buffer; false with `refused` told where the text will not do.
    bool setData(const QModelIndex& index, const QVariant& text, int role = Qt::EditRole) override;

    int rowOf(const RecipeKey& key) const; // -1: it has none
    bool holds(int row, const QString& text) const;
    // The buffer's value is not known to be the controller's and the file's.
    bool isDifferent(int row) const;

signals:
    void refused(const QString& why);
    // This row's cell of the buffer, which was so before.
    void edited(int row, const dov417::RecipeCell& before);

private:
    const RecipeRow& rowAt(int row) const;
    QString text(const RecipeRow& row, int column) const;

    RecipeTable& table_;
};

class RecipeFilter : public QSortFilterProxyModel {
    Q_OBJECT

public:
    RecipeFilter();

    // In name or address, in any case.
    void setText(const QString& text);
    void setDifferentOnly(bool isOn);

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    QString text_;
    bool isDifferentOnly_ = false;
};

} // namespace dov417

#endif
