// The values that are watched, to be put into a plot or taken out of it.
#ifndef DOV417_PANEL_TREND_VALUES_DIALOG_H
#define DOV417_PANEL_TREND_VALUES_DIALOG_H

#include <QAbstractTableModel>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <vector>

#include "panel/desk/panel_desk.h"
#include "panel/trends/trend_arrangement.h"

namespace dov417 {

class TrendChoice : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        name,
        address,
        unit,
        columnCountOfChoice
    };

    // The desk is to outlive it.
    explicit TrendChoice(const PanelDesk& desk);

    void setGroup(const TrendGroup& group);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& data, int role) override;

signals:
    void chosen(const dov417::TrendValue& value, bool isIn);

private:
    const PanelDesk& desk_;
    TrendGroup group_;
};

class TrendValuesDialog : public QDialog {
    Q_OBJECT

public:
    TrendValuesDialog(const PanelDesk& desk, QWidget* parent);

    // Of this plot, counted from 0; it has these values now.
    void showPlot(std::size_t plot, const TrendGroup& group);
    TrendChoice& choice()
    {
        return choice_;
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    TrendChoice choice_;
    QSortFilterProxyModel filter_;
    QLineEdit* const search_;
    QTableView* const table_;
    QLabel* const title_;
};

} // namespace dov417

#endif
