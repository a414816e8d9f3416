#include "panel/project/stations_dialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>

#include "panel/desk/column_widths.h"
#include "panel/desk/dialog_size.h"
#include "panel/desk/state_words.h"
#include "panel/project/project_fields.h"

namespace dov417 {

// ---- the stations ---------------------------------------------------------------------------

StationsModel::StationsModel(const std::vector<ProjectStation>& stations,
                             const std::set<int>& watched)
{
    std::set<int> missing = watched;
    for (const ProjectStation& station : stations) {
        Row row;
        row.number = QString::number(station.number);
        row.name = QString::fromStdString(station.name);
        if (station.maxRegisters)
            row.maxRegisters = QString::number(*station.maxRegisters);
        row.others = station.others;
        row.isOfProject = true;
        rows_.push_back(row);
        missing.erase(station.number);
    }
    for (const int station : missing) {
        Row row;
        row.number = QString::number(station);
        rows_.push_back(row);
    }
    judge();
}

bool StationsModel::saysNothing(const Row& row)
{
    return row.name.isEmpty() && row.maxRegisters.isEmpty() && !row.isOfProject;
}

// Each as the reader of a project takes it.
void StationsModel::judge()
{
    std::set<int> known;
    for (Row& row : rows_) {
        row.read = ProjectStation();
        row.verdict.clear();
        OrderedJson station = OrderedJson::object();
        if (!row.number.isEmpty())
            station["number"] = typedNumber(row.number);
        if (!row.name.isEmpty())
            station["name"] = row.name.toStdString();
        if (!row.maxRegisters.isEmpty())
            station["max-registers"] = typedNumber(row.maxRegisters);
        if (station.empty())
            continue; // nothing has been typed yet
        const OrderedJson project = {{versionMember, projectVersion},
                                     {"stations", OrderedJson::array({station})}};
        try {
            row.read = parseProject(project.dump(), std::string()).stations.front();
            row.read.others = row.others;
            if (!known.insert(row.read.number).second)
                row.verdict = tr("number: %1 is already a station's").arg(row.read.number);
        } catch (const Failure& failure) {
            row.verdict = fieldVerdict(failure, QStringLiteral("stations[0]")).mid(1).trimmed();
        }
    }
}

bool StationsModel::areFit() const
{
    return std::all_of(rows_.begin(), rows_.end(),
                       [](const Row& row) { return row.verdict.isEmpty(); });
}

std::vector<ProjectStation> StationsModel::stations() const
{
    std::vector<ProjectStation> stations;
    for (const Row& row : rows_)
        if (!saysNothing(row))
            stations.push_back(row.read);
    return stations;
}

int StationsModel::add()
{
    const int row = rowCount();
    beginInsertRows(QModelIndex(), row, row);
    rows_.emplace_back();
    endInsertRows();
    return row;
}

void StationsModel::remove(int row)
{
    beginRemoveRows(QModelIndex(), row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    judge(); // another one may have its number
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, verdict));
}

int StationsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int StationsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columnCountOfStations;
}

QVariant StationsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() ||
        (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::ToolTipRole))
        return QVariant();
    const Row& row = rows_.at(static_cast<std::size_t>(index.row()));
    if (index.column() == verdict || role == Qt::ToolTipRole)
        return row.verdict.isEmpty()
                   ? QString()
                   : symbolOf(ValueState::failed) + QLatin1Char(' ') + row.verdict;
    return index.column() == number ? row.number
           : index.column() == name ? row.name
                                    : row.maxRegisters;
}

QVariant StationsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case number:
        return tr("Number");
    case name:
        return tr("Name");
    case maxRegisters:
        return tr("Registers in one request");
    default:
        return QString();
    }
}

Qt::ItemFlags StationsModel::flags(const QModelIndex& index) const
{
    const bool isEditable = index.isValid() && index.column() != verdict;
    return QAbstractTableModel::flags(index) | (isEditable ? Qt::ItemIsEditable : Qt::NoItemFlags);
}

bool StationsModel::setData(const QModelIndex& index, const QVariant& data, int role)
{
    if (!index.isValid() || role != Qt::EditRole || index.column() == verdict)
        return false;
    Row& row = rows_.at(static_cast<std::size_t>(index.row()));
    QString& field = index.column() == number ? row.number
                     : index.column() == name ? row.name
                                              : row.maxRegisters;
    field = data.toString().trimmed();
    judge();
    emit dataChanged(this->index(0, 0), this->index(rowCount() - 1, verdict));
    return true;
}

// ---- the dialog -----------------------------------------------------------------------------

StationsDialog::StationsDialog(const std::vector<ProjectStation>& stations,
                               const std::set<int>& watched, QWidget* parent)
    : QDialog(parent), model_(stations, watched), table_(new QTableView), problem_(new QLabel)
{
    setWindowTitle(tr("Stations of the project"));
    makeTable();
    auto* const about =
        new QLabel(tr("A name is shown wherever its station is. How many registers a station takes "
                      "in one request, where it is fewer than others, counts for the line that is "
                      "opened next."));
    about->setWordWrap(true);
    problem_->setWordWrap(true);
    problem_->setObjectName(QStringLiteral("stationsProblem"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    auto* const add = buttons->addButton(tr("&Add a station"), QDialogButtonBox::ActionRole);
    auto* const remove = buttons->addButton(tr("&Take away"), QDialogButtonBox::ActionRole);
    keep_ = buttons->addButton(tr("&Keep"), QDialogButtonBox::AcceptRole);
    add->setObjectName(QStringLiteral("addStation"));
    remove->setObjectName(QStringLiteral("removeStation"));
    keep_->setObjectName(QStringLiteral("keepStations"));
    for (QAbstractButton* const each : buttons->buttons())
        static_cast<QPushButton*>(each)->setAutoDefault(false); // Enter ends what is typed
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(about);
    rows->addWidget(table_, 1);
    rows->addWidget(problem_);
    rows->addWidget(buttons);
    // Qt puts it before those to which it takes the keys, and never comes back to it.
    setTabOrder(remove, buttons->button(QDialogButtonBox::Cancel));
    const auto judge = [this]() {
        keep_->setEnabled(model_.areFit());
        problem_->setText(model_.areFit() ? QString()
                                          : tr("What is wrong stands at the end of its row."));
    };
    connect(add, &QPushButton::clicked, this, [this]() { this->add(); });
    connect(remove, &QPushButton::clicked, this, [this]() { removeChosen(); });
    connect(&model_, &QAbstractItemModel::dataChanged, this, judge);
    connect(&model_, &QAbstractItemModel::rowsRemoved, this, judge);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    judge();
}

void StationsDialog::makeTable()
{
    table_->setModel(&model_);
    table_->setObjectName(QStringLiteral("stations"));
    table_->setAccessibleName(tr("Stations by number and name"));
    table_->setTabKeyNavigation(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    const int letter = table_->fontMetrics().averageCharWidth();
    setColumnLetters(*table_, {12, 28, 28}); // number, name, registers
    fillWithLast(*table_->horizontalHeader());
    auto* const remove =
        new QShortcut(QKeySequence::Delete, table_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, [this]() { removeChosen(); });
    if (model_.rowCount() > 0)
        table_->setCurrentIndex(model_.index(0, StationsModel::name));
    resizeWithin(*this, QSize(letter * 120, table_->fontMetrics().height() * 24));
}

void StationsDialog::add()
{
    const QModelIndex number = model_.index(model_.add(), StationsModel::number);
    table_->setFocus();
    table_->setCurrentIndex(number);
    table_->edit(number);
}

void StationsDialog::removeChosen()
{
    std::set<int, std::greater<int>> rows; // from the last: places stay
    for (const QModelIndex& index : table_->selectionModel()->selectedIndexes())
        rows.insert(index.row());
    for (const int row : rows)
        model_.remove(row);
}

} // namespace dov417
