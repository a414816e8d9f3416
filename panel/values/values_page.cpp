#include "panel/values/values_page.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "panel/desk/add_bar.h"
#include "panel/desk/column_widths.h"
#include "panel/desk/panel_icons.h"
#include "panel/desk/row_table.h"
#include "panel/desk/value_delegate.h"
#include "panel/values/write_dialog.h"
#include "panel/values/writes_model.h"

namespace dov417 {

namespace {

constexpr int agePauseMs = 500;
const char* const groupingMember = "grouping";
const std::array<const char*, 3> groupingNames = {"none", "station", "area"};

QShortcut* shortcutOf(const QKeySequence& keys, QWidget* widget)
{
    return new QShortcut(keys, widget, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
}

} // namespace

ValuesPage::ValuesPage(PanelDesk& desk)
    : PanelPage(desk), model_(desk), table_(new QTableView), search_(new QLineEdit),
      grouping_(new QComboBox), write_(new QPushButton(tr("&Write \u2026"))),
      remove_(new QPushButton(tr("&Remove"))), empty_(new QLabel)
{
    makeTable();
    auto* const rows = new QVBoxLayout(this);
    auto* const bar = new AddBar(desk);
    rows->addWidget(bar);
    connect(bar, &AddBar::wanted, this, &ValuesPage::add);
    rows->addWidget(makeTools());
    empty_->setText(tr("Nothing is watched yet. Type an address above, or paste rows of a "
                       "spreadsheet with Ctrl+V: an address each, or a name and an address."));
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setWordWrap(true);
    rows->addWidget(empty_, 1);
    auto* const splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("valuesSplit"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(table_);
    splitter->addWidget(makeWrites());
    splitter->setStretchFactor(0, 4);
    splitter->setStretchFactor(1, 1);
    rows->addWidget(splitter, 4);

    connect(&model_, &ValuesModel::refused, this, &PanelPage::told);
    connect(&desk, &PanelDesk::writesChanged, this, [this]() { emit told(QString()); });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { showButtons(); });
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() { showButtons(); });
    connect(shortcutOf(QKeySequence::Paste, this), &QShortcut::activated, this,
            [this]() { paste(); });
    connect(shortcutOf(QKeySequence::Find, this), &QShortcut::activated, search_,
            [this]() { search_->setFocus(); });
    ageTimer_.setInterval(agePauseMs);
    connect(&ageTimer_, &QTimer::timeout, table_, [this]() {
        if (table_->isVisible())
            table_->viewport()->update();
    });
    ageTimer_.start();
    showButtons();
}

QString ValuesPage::title() const
{
    return tr("Values");
}

QIcon ValuesPage::icon() const
{
    return iconOf(PanelIcon::values);
}

void ValuesPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    model_.setSeen(true);
}

void ValuesPage::hideEvent(QHideEvent* event)
{
    PanelPage::hideEvent(event);
    model_.setSeen(false);
}

// ---- what a project keeps of it -----------------------------------------------------------------

std::string ValuesPage::settingsName() const
{
    return "values";
}

OrderedJson ValuesPage::settings() const
{
    return {
        {groupingMember, groupingNames.at(static_cast<std::size_t>(grouping_->currentIndex()))}};
}

std::function<void()> ValuesPage::prepared(const OrderedJson& settings)
{
    const OrderedJson wish = settings.value(groupingMember, OrderedJson(groupingNames.front()));
    const auto name = std::find(groupingNames.begin(), groupingNames.end(), wish);
    if (name == groupingNames.end())
        throw UsageFailure(std::string(groupingMember) + ": there are none, station, area");
    const auto index = static_cast<int>(name - groupingNames.begin());
    return [this, index]() { grouping_->setCurrentIndex(index); };
}

// ---- its parts ----------------------------------------------------------------------------------

void ValuesPage::makeTable()
{
    filter_.setSourceModel(&model_);
    table_->setModel(&filter_);
    table_->setObjectName(QStringLiteral("values"));
    table_->setAccessibleName(tr("Values"));
    showRows(*table_, roomInEditedRow);
    table_->setAlternatingRowColors(true);
    table_->setSortingEnabled(true);
    table_->sortByColumn(-1, Qt::AscendingOrder); // as they were added
    table_->setContextMenuPolicy(Qt::CustomContextMenu);
    table_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    table_->setItemDelegateForColumn(ValuesModel::value, new ValueDelegate(table_));
    // Name, address, value, state, age, changes.
    setColumnLetters(*table_, {26, 18, 20, 36, 12, 12});
    table_->horizontalHeader()->setSectionResizeMode(ValuesModel::state, QHeaderView::Stretch);
    connect(table_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& place) { showMenu(place); });
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this]() { showButtons(); });
}

QWidget* ValuesPage::makeTools()
{
    auto* const tools = new QWidget;
    auto* const row = new QHBoxLayout(tools);
    row->setContentsMargins(0, 0, 0, 0);
    search_->setPlaceholderText(tr("Show only names, addresses and comments with \u2026"));
    search_->setAccessibleName(tr("Show only rows with this text"));
    search_->setObjectName(QStringLiteral("search"));
    search_->setClearButtonEnabled(true);
    grouping_->addItems({tr("not grouped"), tr("grouped by station"), tr("grouped by area")});
    grouping_->setAccessibleName(tr("How rows are grouped"));
    grouping_->setObjectName(QStringLiteral("grouping"));
    write_->setObjectName(QStringLiteral("write"));
    remove_->setObjectName(QStringLiteral("remove"));
    row->addWidget(search_, 1);
    row->addWidget(grouping_);
    row->addWidget(write_);
    row->addWidget(remove_);
    connect(search_, &QLineEdit::textChanged, &filter_, &ValuesFilter::setText);
    connect(grouping_, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int how) {
        filter_.setGrouping(static_cast<Grouping>(how));
        table_->verticalHeader()->setVisible(how != 0);
        emit settingsChanged();
    });
    connect(write_, &QPushButton::clicked, this, [this]() { writeChosen(); });
    connect(remove_, &QPushButton::clicked, this, [this]() { removeChosen(); });
    return tools;
}

QWidget* ValuesPage::makeWrites()
{
    auto* const writes = new QTableView;
    writes->setModel(new WritesModel(desk_));
    writes->model()->setParent(writes);
    writes->setAccessibleName(tr("Writes of this session"));
    writes->setObjectName(QStringLiteral("writes"));
    showRows(*writes, roomInEditedRow);
    fillWithLast(*writes->horizontalHeader());
    setColumnLetters(*writes, {12, 24, 16, 16}); // time, name, address, value
    return writes;
}

std::vector<int> ValuesPage::chosenRows() const
{
    std::vector<int> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows())
        rows.push_back(filter_.mapToSource(index).row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::vector<PanelValue> ValuesPage::chosenValues() const
{
    std::vector<PanelValue> values;
    for (const int row : chosenRows())
        values.push_back(model_.valueAt(row));
    return values;
}

void ValuesPage::showButtons()
{
    const bool isAny = !desk_.tags().values.empty();
    empty_->setVisible(!isAny);
    const bool areChosen = table_->selectionModel()->hasSelection();
    write_->setEnabled(areChosen && desk_.hasLine() && desk_.state().isUnlocked);
    write_->setToolTip(desk_.state().isUnlocked
                           ? tr("Write to the rows that are chosen; F2 writes in place")
                           : tr("Writing is locked: unlock it in the status line"));
    remove_->setEnabled(areChosen);
}

void ValuesPage::writeChosen()
{
    auto* const dialog = new WriteDialog(desk_, chosenValues(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void ValuesPage::removeChosen()
{
    std::set<std::size_t> places;
    for (const PanelValue& value : chosenValues())
        places.insert(value.place);
    desk_.removeItems({places.begin(), places.end()});
}

void ValuesPage::add(const std::vector<Item>& items)
{
    const std::size_t known = desk_.tags().items.size();
    desk_.addItems(items);
    // They stand at the end, which may be far below what is seen.
    QItemSelection added;
    for (int row = 0; row < model_.rowCount(); ++row) {
        const QModelIndex shown = filter_.mapFromSource(model_.index(row, 0));
        if (model_.valueAt(row).place >= known && shown.isValid())
            added.select(shown, shown);
    }
    if (added.isEmpty())
        return;
    table_->setCurrentIndex(added.indexes().front());
    table_->selectionModel()->select(added, QItemSelectionModel::ClearAndSelect |
                                                QItemSelectionModel::Rows);
}

void ValuesPage::paste()
{
    try {
        const std::vector<Item> items =
            pastedItems(desk_.library(), QApplication::clipboard()->text().toStdString());
        add(items);
        emit told(items.empty() ? tr("There is nothing to paste.") : QString());
    } catch (const Failure& failure) {
        emit told(tr("Nothing was added: %1. Rows to paste are an address each, a name and an "
                     "address, or the columns of a tag file below its header.")
                      .arg(QString::fromUtf8(failure.what())));
    }
}

} // namespace dov417
