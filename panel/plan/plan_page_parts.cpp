#include <QHBoxLayout>
#include <QHeaderView>
#include <QPainter>
#include <QSplitter>
#include <QVBoxLayout>

#include "panel/desk/column_widths.h"
#include "panel/desk/flow_layout.h"
#include "panel/desk/row_table.h"
#include "panel/plan/plan_map_delegate.h"
#include "panel/plan/plan_page.h"

namespace dov417 {

namespace {

void makePlainRows(QTableView* table, const std::vector<int>& letters)
{
    showRows(*table, roomInRow);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    fillWithLast(*table->horizontalHeader());
    setColumnLetters(*table, letters);
}

// One word of the map with what it means.
class PlanKeySign : public QWidget {
public:
    explicit PlanKeySign(const PlanWord& word) : word_(word)
    {
        const int edge = fontMetrics().height() + 6;
        setFixedSize(edge, edge);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), palette().brush(QPalette::Base));
        paintWord(&painter, rect(), palette(), word_);
    }

private:
    PlanWord word_;
};

} // namespace

QWidget* PlanPage::makeMap()
{
    mapTable_->setModel(&map_);
    mapTable_->setItemDelegate(new PlanMapDelegate(mapTable_));
    mapTable_->setObjectName(QStringLiteral("planMap"));
    mapTable_->setAccessibleName(tr("The controller's memory, word by word"));
    mapTable_->setSelectionMode(QAbstractItemView::SingleSelection);
    mapTable_->setTabKeyNavigation(false);
    mapTable_->setShowGrid(false);
    mapTable_->setMouseTracking(true);
    mapTable_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mapTable_->horizontalHeader()->setMinimumSectionSize(8);
    mapTable_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    mapTable_->horizontalHeader()->hide(); // a row begins with the word beside it
    mapTable_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    mapTable_->verticalHeader()->setDefaultSectionSize(mapTable_->fontMetrics().height() + 8);
    connect(mapTable_, &QTableView::entered, this,
            [this](const QModelIndex& index) { name(index); });
    connect(mapTable_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& index) { name(index); });

    requestTable_->setModel(&requests_);
    requestTable_->setObjectName(QStringLiteral("planRequests"));
    requestTable_->setAccessibleName(tr("The requests of a cycle"));
    makePlainRows(requestTable_, {9, 20, 7, 12, 11});
    connect(requestTable_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& index) {
                if (index.isValid())
                    mapTable_->setCurrentIndex(map_.startOf(index.row()));
            });

    auto* const above = new QWidget;
    auto* const inside = new QVBoxLayout(above);
    inside->setContentsMargins(0, 0, 0, 0);
    inside->addWidget(mapTable_, 1);
    inside->addWidget(named_);
    inside->addWidget(makeKey());
    auto* const both = new QSplitter(Qt::Vertical);
    both->setObjectName(QStringLiteral("planMapSplit"));
    both->setChildrenCollapsible(false);
    both->addWidget(above);
    both->addWidget(requestTable_);
    both->setStretchFactor(0, 2);
    both->setStretchFactor(1, 1);
    requestTable_->setMinimumHeight(requestTable_->fontMetrics().height() * 6);
    // As high as two lines, so that nothing jumps while the mouse moves.
    named_->setMinimumHeight(2 * named_->fontMetrics().lineSpacing());
    named_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    return both;
}

QWidget* PlanPage::makeKey() const
{
    PlanWord watched;
    watched.use = WordUse::watched;
    watched.requests = {0};
    PlanWord first = watched;
    first.beginsRequest = true;
    PlanWord last = watched;
    last.endsRequest = true;
    PlanWord part = watched;
    part.beginsPart = true;
    PlanWord along = watched;
    along.use = WordUse::readAlong;
    PlanWord beyond = watched;
    beyond.isBeyondLimit = true;
    PlanWord uncovered;
    uncovered.use = WordUse::uncovered;
    auto* const signs = new QWidget;
    auto* const row = new FlowLayout(signs);
    for (const auto& [word, text] :
         {std::pair{watched, tr("watched")}, std::pair{first, tr("request begins")},
          std::pair{last, tr("request ends")}, std::pair{along, tr("read along")},
          std::pair{beyond, tr("past %1 words").arg(maxWordsOfARead)},
          std::pair{uncovered, tr("not read")}, std::pair{part, tr("part begins")}})
        row->addWidget(sideBySide({new PlanKeySign(word), new QLabel(text)}));
    auto* const hint = new QLabel(tr("A row has %1 words; dashes: between the rows are more that "
                                     "nothing asks for.")
                                      .arg(PlanRow::words));
    hint->setWordWrap(true);
    auto* const key = new QWidget;
    auto* const rows = new QVBoxLayout(key);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(signs);
    rows->addWidget(hint);
    return key;
}

QWidget* PlanPage::makeGaps()
{
    gapTable_->setModel(&gaps_);
    gapTable_->setObjectName(QStringLiteral("planGaps"));
    gapTable_->setAccessibleName(tr("What each merge gap comes to"));
    makePlainRows(gapTable_, {12, 9, 11});
    connect(gapTable_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this]() { choose(); });
    useBest_->setObjectName(QStringLiteral("useBest"));
    useChosen_->setObjectName(QStringLiteral("useChosen"));
    connect(useBest_, &QPushButton::clicked, this, [this]() { use(gaps_.best()); });
    connect(useChosen_, &QPushButton::clicked, this,
            [this]() { use(gapTable_->currentIndex().row()); });
    auto* const gaps = new QWidget;
    auto* const rows = new QVBoxLayout(gaps);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* const what = new QLabel(
        tr("A request reads across holes of at most the merge gap: each hole costs the words in "
           "it, or another request."));
    what->setWordWrap(true);
    rows->addWidget(what);
    rows->addWidget(makeTime());
    rows->addWidget(measured_);
    rows->addWidget(plot_, 3);
    rows->addWidget(gapTable_, 2);
    gapTable_->setMinimumHeight(gapTable_->fontMetrics().height() * 6);
    plot_->setMinimumHeight(plot_->fontMetrics().height() * 6);
    plot_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    auto* const buttons = new QWidget;
    auto* const row = new FlowLayout(buttons);
    row->addWidget(useBest_);
    row->addWidget(useChosen_);
    rows->addWidget(buttons);
    rows->addWidget(notes_);
    return gaps;
}

QWidget* PlanPage::makeTime()
{
    auto* const label = new QLabel(tr("A controller answers a&fter"));
    label->setBuddy(responseTime_);
    responseTime_->setRange(asMeasured, maxMs);
    responseTime_->setValue(asMeasured);
    responseTime_->setSpecialValueText(tr("as measured"));
    responseTime_->setSuffix(tr(" ms"));
    responseTime_->setObjectName(QStringLiteral("responseTime"));
    responseTime_->setKeyboardTracking(false); // "50" is not 5 first
    responseTime_->setAccessibleName(tr("What a controller takes before it answers"));
    measured_->setObjectName(QStringLiteral("measuredTime"));
    auto* const time = new QWidget;
    auto* const row = new FlowLayout(time);
    row->addWidget(sideBySide({label, responseTime_}));
    connect(responseTime_, QOverload<int>::of(&QSpinBox::valueChanged), this, [this]() {
        planAnew();
        emit settingsChanged();
    });
    return time;
}

} // namespace dov417
