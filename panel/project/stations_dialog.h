// The stations of a project: what each is called, and what it takes in one request.
#ifndef DOV417_PANEL_STATIONS_DIALOG_H
#define DOV417_PANEL_STATIONS_DIALOG_H

#include <QAbstractTableModel>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <set>
#include <vector>

#include "live/project.h"

namespace dov417 {

class StationsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        number,
        name,
        maxRegisters,
        verdict, // what is wrong with the row
        columnCountOfStations
    };

    // Those of the project, and below them those that are watched and not among them.
    StationsModel(const std::vector<ProjectStation>& stations, const std::set<int>& watched);

    // Without the rows of which nothing was said. Only where all of them are fit.
    std::vector<ProjectStation> stations() const;
    bool areFit() const;
    int add(); // an empty row; returns it
    void remove(int row);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& data, int role) override;

private:
    struct Row {
        QString number;
        QString name;
        QString maxRegisters;
        OrderedJson others = OrderedJson::object(); // a newer program's
        bool isOfProject = false;                   // it stays, whatever it says
        ProjectStation read;
        QString verdict;
    };

    void judge();
    static bool saysNothing(const Row& row);

    std::vector<Row> rows_;
};

class StationsDialog : public QDialog {
    Q_OBJECT

public:
    StationsDialog(const std::vector<ProjectStation>& stations, const std::set<int>& watched,
                   QWidget* parent);

    // Of what was accepted.
    std::vector<ProjectStation> stations() const
    {
        return model_.stations();
    }

private:
    void makeTable();
    void add();
    void removeChosen();

    StationsModel model_;
    QTableView* const table_;
    QLabel* const problem_;
    QPushButton* keep_ = nullptr;
};

} // namespace dov417

#endif
