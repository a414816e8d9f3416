// The bits that are watched, sixteen a row: a row is a word, a column one of its bits.
#ifndef DOV417_PANEL_LAMPS_MODEL_H
#define DOV417_PANEL_LAMPS_MODEL_H

#include <QAbstractTableModel>
#include <QStringList>
#include <array>
#include <optional>
#include <unordered_map>
#include <vector>

#include "panel/desk/panel_desk.h"

namespace dov417 {

class LampsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    static constexpr int bitsOfAWord = 16;

    // Empty, until beginAnew() was called.
    explicit LampsModel(PanelDesk& desk);

    // To be called when other tags are watched, one of them at once.
    void beginAnew();
    void clear();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Null where this bit is not watched.
    const PanelValue* valueAt(const QModelIndex& index) const;
    // Nothing where it was never read.
    std::optional<bool> isOn(const QModelIndex& index) const;
    ValueStanding standingAt(const QModelIndex& index) const;

private:
    struct LampWord {
        QString title;                       // "2/M_bit:1"
        QStringList blocks;                  // tags of several of its bits
        std::array<int, bitsOfAWord> places; // of the values; -1: not watched
    };

    static QString rowTitle(const LampWord& word);
    void tell(const std::vector<Address>& addresses);

    PanelDesk& desk_;
    std::vector<LampWord> words_;
    std::unordered_map<Address, QModelIndex, AddressHash> cells_;
};

} // namespace dov417

#endif
