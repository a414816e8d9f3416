// The writes of this session, the latest first.
#ifndef DOV417_PANEL_WRITES_MODEL_H
#define DOV417_PANEL_WRITES_MODEL_H

#include <QAbstractTableModel>

#include "panel/desk/panel_desk.h"

namespace dov417 {

class WritesModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit WritesModel(PanelDesk& desk);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    PanelDesk& desk_;
};

} // namespace dov417

#endif
