// What the line was used for, as rows; each begins with what it looks like in the view.
#ifndef DOV417_PANEL_WIRE_SHARES_MODEL_H
#define DOV417_PANEL_WIRE_SHARES_MODEL_H

#include <QAbstractTableModel>
#include <vector>

#include "panel/frames/wire_shares.h"

namespace dov417 {

class WireSharesModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        what,
        part,
        perCycle,
        inAll
    };
    static constexpr int columns = 4;

    using QAbstractTableModel::QAbstractTableModel;

    void show(const WireShares& shares);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    QString text(WireUse use, int column) const;

    WireShares shares_;
};

} // namespace dov417

#endif
