// The rows of the values that a person wants to see, in the order that he wants.
//
// Rows are put in order when they are asked to be, and stay there while values change: who reads a
// row does not lose it.
#ifndef DOV417_PANEL_VALUES_FILTER_H
#define DOV417_PANEL_VALUES_FILTER_H

#include <QSortFilterProxyModel>

namespace dov417 {

enum class Grouping {
    none,
    byStation,
    byArea
};

class ValuesFilter : public QSortFilterProxyModel {
    Q_OBJECT

public:
    explicit ValuesFilter(QObject* parent = nullptr);

    // In name, address or comment, in any case.
    void setText(const QString& text);
    // Groups stand together, each in the order that is asked for.
    void setGrouping(Grouping grouping);
    // By a column; -1: as they were added.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    QString group(const QModelIndex& index) const;

    QString text_;
    Grouping grouping_ = Grouping::none;
    int column_ = -1;
};

} // namespace dov417

#endif
