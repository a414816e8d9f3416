// The values that are watched as the rows of a table.
#ifndef DOV417_PANEL_VALUES_MODEL_H
#define DOV417_PANEL_VALUES_MODEL_H

#include <QAbstractTableModel>
#include <unordered_map>
#include <vector>

#include "panel/desk/panel_desk.h"

namespace dov417 {

class ValuesModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        name,
        address,
        value,
        state,
        age,
        changes
    };
    static constexpr int columns = 6;
    // "station 1", "3 filler", "area R": what rows are grouped by; see ValuesFilter.
    static constexpr int stationRole = Qt::UserRole;
    static constexpr int areaRole = Qt::UserRole + 1;

    explicit ValuesModel(PanelDesk& desk);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Writes; false with `refused` told where the text will not do.
    bool setData(const QModelIndex& index, const QVariant& text, int role = Qt::EditRole) override;

    // For the filter, which asks often: the order of two rows by a column, and whether a text is in
    // name, address or comment of one, in any case.
    bool isBefore(int left, int right, int column) const;
    bool holds(int row, const QString& text) const;
    // Who does not look has no rows, once something else is watched: of thousands, which a view
    // puts in order, they take longer than all that the others do at once.
    void setSeen(bool isSeen);
    // Of a row as it is now: to be copied, as rows begin anew when something else is watched.
    const PanelValue& valueAt(int row) const;

signals:
    void refused(const QString& why);

private:
    using Rows = std::unordered_multimap<Address, int, AddressHash>;

    const Rows& rows() const;
    void beginAnew();
    void tell(const std::vector<Address>& addresses);
    QString text(const PanelValue& value, int column) const;
    QString stationName(const PanelValue& each) const;
    // What is looked through: made when somebody searches.
    const std::vector<QString>& searched() const;

    PanelDesk& desk_;
    bool isSeen_ = false;
    bool hasRows_ = false;
    mutable Rows rows_;
    // By row: name, address, comment, station; empty until somebody looks for a text, as making
    // them takes longer than all else of a row.
    mutable std::vector<QString> searched_;
};

} // namespace dov417

#endif
