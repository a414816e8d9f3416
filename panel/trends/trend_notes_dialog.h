// All notes at a moment, those of other days too: a list to change them, to go to one, to take one
// away.
#ifndef DOV417_PANEL_TREND_NOTES_DIALOG_H
#define DOV417_PANEL_TREND_NOTES_DIALOG_H

#include <QAbstractTableModel>
#include <QDialog>
#include <QPushButton>
#include <QTableView>
#include <vector>

#include "panel/trends/trend_plot.h"

namespace dov417 {

class TrendNotesModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        time,
        text,
        columnCountOfNotes
    };

    // The clock is to outlive it.
    explicit TrendNotesModel(const TrendClock& clock) : clock_(clock) {}

    // Shows them by their time.
    void setNotes(const std::vector<TrendNote>& notes);
    const TrendNote& note(int row) const
    {
        return notes_.at(static_cast<std::size_t>(row));
    }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& data, int role) override;

signals:
    void edited(const dov417::TrendNote& note, const QString& text);

private:
    const TrendClock& clock_;
    std::vector<TrendNote> notes_;
};

class TrendNotesDialog : public QDialog {
    Q_OBJECT

public:
    TrendNotesDialog(const TrendClock& clock, QWidget* parent);

    TrendNotesModel& model()
    {
        return model_;
    }

signals:
    void removed(const std::vector<dov417::TrendNote>& notes); // a person's own
    void wanted(dov417::TrendTime at);                         // to be seen
    void saveAsked();

private:
    void addButtons(QLayout* rows);
    void removeChosen();
    void showChosen();
    void showState();

    TrendNotesModel model_;
    QTableView* const table_;
    QPushButton* const show_;
    QPushButton* const remove_;
};

} // namespace dov417

#endif
