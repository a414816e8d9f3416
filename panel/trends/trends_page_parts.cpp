// How the page of trends is put together.
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>

#include "panel/desk/column_widths.h"
#include "panel/desk/flow_layout.h"
#include "panel/desk/panel_clock.h"
#include "panel/desk/row_table.h"
#include "panel/trends/trends_page.h"

namespace dov417 {

namespace {

struct SpanChoice {
    const char* text;
    int seconds;
};

const SpanChoice spanChoices[] = {
    {QT_TRANSLATE_NOOP("dov417::TrendsPage", "10 seconds"), 10},
    {QT_TRANSLATE_NOOP("dov417::TrendsPage", "30 seconds"), 30},
    {QT_TRANSLATE_NOOP("dov417::TrendsPage", "1 minute"), 60},
    {QT_TRANSLATE_NOOP("dov417::TrendsPage", "10 minutes"), 600},
    {QT_TRANSLATE_NOOP("dov417::TrendsPage", "1 hour"), 3600},
    {QT_TRANSLATE_NOOP("dov417::TrendsPage", "8 hours"), 8 * 3600},
    {QT_TRANSLATE_NOOP("dov417::TrendsPage", "1 day"), 24 * 3600},
};

constexpr int refreshPauseMs = 200;

} // namespace

TrendsPage::TrendsPage(PanelDesk& desk)
    : PanelPage(desk), recorder_(desk, history_), readout_(desk, history_),
      stack_(new TrendStack(history_, clock_)), table_(new QTableView), upper_(new QStackedWidget),
      hold_(new QPushButton(tr("Stand s&till"))), span_(new QComboBox), memory_(new QSpinBox),
      empty_(new QLabel), between_(new QLabel), dialog_(new TrendValuesDialog(desk, this)),
      notesDialog_(new TrendNotesDialog(clock_, this))
{
    makeReadout();
    empty_->setText(tr("Here values are drawn over time. As soon as some that are watched change, "
                       "they appear by themselves; Values \u2026 chooses others, and so does the "
                       "menu of a row on the page of values."));
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setWordWrap(true);
    between_->setObjectName(QStringLiteral("trendCursors"));
    between_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    between_->setWordWrap(true);
    auto* const lower = new QWidget;
    auto* const lowerRows = new QVBoxLayout(lower);
    lowerRows->setContentsMargins(0, 0, 0, 0);
    lowerRows->addWidget(between_);
    lowerRows->addWidget(table_, 1);
    auto* const splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("trendsSplit"));
    splitter->setChildrenCollapsible(false);
    upper_->addWidget(empty_);
    upper_->addWidget(stack_);
    splitter->addWidget(upper_);
    splitter->addWidget(lower);
    splitter->setStretchFactor(0, 1);
    const int line = fontMetrics().height();
    upper_->setMinimumHeight(line * 9);
    splitter->setSizes({line * 26, line * 11});
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(makeTools());
    rows->addWidget(splitter, 1);

    connect(stack_, &TrendStack::viewChanged, this, [this]() {
        const double span = static_cast<double>(stack_->view().span()) / trendSecond;
        showView();
        if (span == arrangement_.span)
            return;
        arrangement_.span = span;
        emit settingsChanged();
    });
    connect(stack_, &TrendStack::cursorsChanged, this, [this]() { showCursors(); });
    connect(stack_, &TrendStack::noteAsked, this, [this]() { askNote(); });
    connect(&recorder_, &TrendRecorder::otherLine, this, [this]() {
        addNote(tr("another line: %1").arg(QString::fromStdString(desk_.state().port)));
    });
    connect(&recorder_, &TrendRecorder::doubted, this,
            [this]() { addNote(tr("in doubt: what is before may be replies to other requests")); });
    connect(&desk, &PanelDesk::valuesCame, this, [this]() {
        stack_->tell();
        chooseByItself();
    });
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() {
        if (resolve()) // to make hundreds of curves takes long
            showArrangement();
    });
    connect(&desk, &PanelDesk::projectBegan, this, [this]() { beginProject(); });
    connect(&dialog_->choice(), &TrendChoice::chosen, this,
            [this](const TrendValue& value, bool isIn) { putIn(value, isIn); });
    connect(&refreshTimer_, &QTimer::timeout, this, [this]() { refresh(); });
    connect(&exportTimer_, &QTimer::timeout, this, [this]() { writeTable(); });
    followNotes();
    refreshTimer_.start(refreshPauseMs);
    showArrangement();
    showCursors();
}

QWidget* TrendsPage::makeTools()
{
    auto* const tools = new QWidget;
    auto* const row = new FlowLayout(tools);
    hold_->setCheckable(true);
    hold_->setObjectName(QStringLiteral("trendHold"));
    hold_->setToolTip(tr("Stand still, or run with time (space bar; the End key runs)"));
    connect(hold_, &QPushButton::clicked, this, [this](bool isOn) {
        stack_->arrange([isOn](TrendView& view) { isOn ? view.standStill() : view.run(); });
    });
    span_->setAccessibleName(tr("How much time is seen"));
    span_->setObjectName(QStringLiteral("trendSpan"));
    for (const SpanChoice& choice : spanChoices)
        span_->addItem(tr(choice.text), choice.seconds);
    connect(span_, QOverload<int>::of(&QComboBox::activated), this, [this](int place) {
        const TrendTime span = span_->itemData(place).toInt() * trendSecond;
        if (span > 0)
            stack_->arrange([span](TrendView& view) { view.setSpan(span); });
    });
    const auto button = [&](const QString& text, const char* name, const QString& tip,
                            std::function<void()> call) {
        auto* const each = new QPushButton(text);
        each->setObjectName(QLatin1String(name));
        each->setToolTip(tip);
        connect(each, &QPushButton::clicked, this, std::move(call));
        row->addWidget(each);
    };
    row->addWidget(hold_);
    row->addWidget(span_);
    button(tr("&All"), "trendAll", tr("Everything that was recorded of these values (Home)"),
           [this]() { stack_->showAll(); });
    button(tr("&Fit"), "trendFit", tr("Scales follow the values again (0)"),
           [this]() { stack_->followValues(); });
    row->addWidget(makeNotes());
    row->addWidget(makeMemory());
    button(tr("&Values \u2026"), "trendValues", tr("Which values the plot shows"),
           [this]() { openValues(); });
    row->addWidget(makeMenus());
    return tools;
}

QPushButton* TrendsPage::makeNotes()
{
    auto* const notes = new QPushButton(tr("&Notes"));
    auto* const menu = new QMenu(notes);
    menu->setObjectName(QStringLiteral("trendNote"));
    menu->addAction(tr("&New note at cursor A, else now \u2026 (N)"), this,
                    [this]() { askNote(); });
    menu->addAction(tr("&List of notes \u2026"), this, [this]() { openNotes(); });
    notes->setMenu(menu);
    return notes;
}

QWidget* TrendsPage::makeMenus()
{
    auto* const menus = new QWidget;
    auto* const row = new QHBoxLayout(menus);
    row->setContentsMargins(0, 0, 0, 0);
    auto* const plots = new QPushButton(tr("&Plots"));
    auto* const plotMenu = new QMenu(plots);
    plotMenu->setObjectName(QStringLiteral("trendPlots"));
    plotMenu->addAction(tr("&New plot"), this, [this]() {
        arrangement_.plots.emplace_back();
        arrange();
        stack_->setCurrent(arrangement_.plots.size() - 1);
        openValues();
    });
    plotMenu->addAction(tr("&Remove the plot that was touched last"), this,
                        [this]() { removePlot(); });
    plotMenu->addAction(tr("Remove the &chosen values from their plots"), this,
                        [this]() { removeChosen(); });
    plots->setMenu(plotMenu);
    auto* const save = new QPushButton(tr("&Save"));
    auto* const saveMenu = new QMenu(save);
    saveMenu->setObjectName(QStringLiteral("trendSave"));
    saveMenu->addAction(tr("&Values as CSV \u2026"), this, [this]() { askFile(true); });
    saveMenu->addAction(tr("&Picture as PNG or SVG \u2026"), this, [this]() { askFile(false); });
    save->setMenu(saveMenu);
    row->addWidget(plots);
    row->addWidget(save);
    return menus;
}

QWidget* TrendsPage::makeMemory()
{
    auto* const memory = new QWidget;
    auto* const row = new QHBoxLayout(memory);
    row->setContentsMargins(0, 0, 0, 0);
    memory_->setRange(static_cast<int>(TrendHistory::minMebibytes),
                      static_cast<int>(TrendHistory::maxMebibytes));
    memory_->setSuffix(tr(" MB"));
    memory_->setObjectName(QStringLiteral("trendMemory"));
    memory_->setAccessibleName(tr("Memory for recorded values"));
    memory_->setKeyboardTracking(false);
    auto* const label = new QLabel(tr("&Memory"));
    label->setBuddy(memory_);
    connect(memory_, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int mebibytes) {
        if (static_cast<std::size_t>(mebibytes) == arrangement_.memory)
            return;
        arrangement_.memory = static_cast<std::size_t>(mebibytes);
        history_.setLimit(arrangement_.memory * TrendHistory::mebibyte);
        emit settingsChanged();
    });
    row->addWidget(label);
    row->addWidget(memory_);
    return memory;
}

void TrendsPage::makeReadout()
{
    table_->setModel(&readout_);
    table_->setObjectName(QStringLiteral("trendReadout"));
    table_->setAccessibleName(tr("The values of the plots"));
    showRows(*table_, roomInRow);
    table_->setContextMenuPolicy(Qt::ActionsContextMenu);
    table_->setIconSize(QSize(28, table_->fontMetrics().height()));
    table_->setMinimumHeight(table_->fontMetrics().height() * 8);
    // Plot, name, value, state, at A and at B ("request failed"), five numbers.
    setColumnLetters(*table_, {6, 27, 14, 16, 16, 16, 14, 14, 14, 14, 9});
    fillWithLast(*table_->horizontalHeader());
    auto* const remove = new QAction(tr("&Remove from the plot"), table_);
    remove->setShortcut(QKeySequence::Delete);
    remove->setShortcutContext(Qt::WidgetShortcut);
    connect(remove, &QAction::triggered, this, [this]() { removeChosen(); });
    table_->addAction(remove);
    connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& index) {
                if (index.isValid())
                    stack_->setCurrent(readout_.plotOf(index.row()));
            });
}

void TrendsPage::openValues()
{
    const std::size_t plot = stack_->current();
    dialog_->showPlot(plot, plot < arrangement_.plots.size() ? arrangement_.plots.at(plot)
                                                             : TrendGroup());
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}

void TrendsPage::showView()
{
    const TrendView& view = stack_->view();
    hold_->setChecked(!view.isRunning());
    const auto seconds = static_cast<int>(view.span() / trendSecond);
    const bool isWhole = view.span() % trendSecond == 0;
    const int known = isWhole ? span_->findData(seconds) : -1;
    const int other = span_->findData(0);
    if (other >= 0)
        span_->removeItem(other);
    if (known < 0)
        span_->insertItem(span_->count(),
                          tr("%1 s").arg(static_cast<double>(view.span()) / trendSecond, 0, 'f',
                                         seconds < 10 ? 2 : 0),
                          0);
    span_->setCurrentIndex(known < 0 ? span_->count() - 1 : span_->findData(seconds));
}

} // namespace dov417
