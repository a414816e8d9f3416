#include "panel/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>

#include "panel/desk/help_boxes.h"
#include "panel/desk/state_words.h"
#include "panel/desk/yes_question.h"
#include "panel/faults/faults_page.h"
#include "panel/frames/line_page.h"
#include "panel/frames/wire_page.h"
#include "panel/health/health_page.h"
#include "panel/plan/plan_page.h"
#include "panel/project/window_layout.h"
#include "panel/project/window_parts.h"
#include "panel/recipes/recipes_page.h"
#include "panel/start_page.h"
#include "panel/trends/trends_page.h"
#include "panel/values/lamps_page.h"
#include "panel/values/values_page.h"

namespace dov417 {

namespace {

// What is long, so that the pages have the room.
QString inTwoLines(const QString& title)
{
    constexpr int longTitle = 12;
    const int space = title.lastIndexOf(QLatin1Char(' '), title.size() / 2);
    QString text = title;
    if (text.size() > longTitle && space > 0)
        text[space] = QLatin1Char('\n');
    return text;
}

// A station that is silent while others answer is seen by its values alone.
int oldValues(const PanelDesk& desk)
{
    const std::vector<PanelValue>& values = desk.tags().values;
    return static_cast<int>(
        std::count_if(values.begin(), values.end(), [&desk](const PanelValue& value) {
            return desk.book().isOld(value.address);
        }));
}

} // namespace

MainWindow::MainWindow(PanelDesk& desk)
    : desk_(desk), document_(desk),
      actions_(std::make_unique<ProjectActions>(desk, document_, *this)),
      go_(menuBar()->addMenu(tr("&Go to"))), list_(new QListWidget), stack_(new QStackedWidget),
      sentence_(new QLabel), cycle_(new QLabel), message_(new QLabel), lock_(new QToolButton)
{
    auto* const centre = new QWidget;
    auto* const columns = new QHBoxLayout(centre);
    columns->setContentsMargins(0, 0, 0, 0);
    auto* const right = new QVBoxLayout;
    list_->setAccessibleName(tr("Pages"));
    list_->setIconSize(QSize(24, 24));
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    message_->setWordWrap(true);
    message_->setAccessibleName(tr("Message"));
    message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message_->setContentsMargins(8, 0, 8, 4);
    message_->hide();
    columns->addWidget(list_);
    columns->addLayout(right, 1);
    right->addWidget(stack_, 1);
    right->addWidget(message_);
    setCentralWidget(centre);
    makeStatusLine();

    addPages();
    list_->setFixedWidth(list_->sizeHintForColumn(0) + 4 * list_->frameWidth() + 16);
    connect(list_, &QListWidget::currentRowChanged, stack_, &QStackedWidget::setCurrentIndex);
    connect(stack_, &QStackedWidget::currentChanged, actions_.get(), [this](int page) {
        actions_->setHistory(pages_.at(static_cast<std::size_t>(page))->ownHistory());
    });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { showState(); });
    connect(&document_, &ProjectDocument::changed, this, [this]() { showTitle(); });
    connect(actions_.get(), &ProjectActions::told, this,
            [this](const QString& text) { tell(text); });
    connect(actions_.get(), &ProjectActions::opened, this, [this]() {
        if (currentPage() == 0)
            showPage(1);
    });
    document_.addLayout(
        "window", [this]() { return layout(); },
        [this](const OrderedJson& layout) { return preparedLayout(layout); });
    makeHelpMenu();
    showPage(0);
    showState();
    showTitle();
}

void MainWindow::addPages()
{
    addPage(new StartPage(desk_, document_, *actions_));
    auto* const values = new ValuesPage(desk_);
    auto* const trends = new TrendsPage(desk_);
    auto* const line = new LinePage(desk_);
    auto* const wire = new WirePage(desk_);
    addPage(values);
    addPage(new LampsPage(desk_));
    addPage(trends);
    addPage(line);
    addPage(wire);
    addPage(new PlanPage(desk_));
    addPage(new HealthPage(desk_));
    addPage(new RecipesPage(desk_));
    addPage(new FaultsPage(desk_));
    connect(values, &ValuesPage::trendsAsked, this,
            [this, trends](const std::vector<Address>& addresses) {
                trends->showValues(addresses);
                showPage(stack_->indexOf(trends));
            });
    connect(wire, &WirePage::frameWanted, this, [this, line](long long number) {
        if (line->showFrame(number))
            showPage(stack_->indexOf(line));
    });
    // Both show the same: the line, or a recording of one.
    connect(line, &LinePage::logShown, wire, &WirePage::showLog);
    connect(line, &LinePage::lineShown, wire, &WirePage::showLine);
    connect(wire, &WirePage::lineWanted, line, &LinePage::backToLine);
}

void MainWindow::addPage(PanelPage* page)
{
    const int number = static_cast<int>(pages_.size()) + 1;
    pages_.push_back(page);
    stack_->addWidget(page);
    auto* const item = new QListWidgetItem(page->icon(), inTwoLines(page->title()), list_);
    item->setToolTip(QStringLiteral("Ctrl+%1").arg(number % 10)); // Ctrl+0 is the tenth's
    QAction* const go = go_->addAction(page->title());
    go->setShortcut(QKeySequence(item->toolTip()));
    connect(go, &QAction::triggered, this, [this, number]() { showPage(number - 1); });
    connect(page, &PanelPage::told, this, [this](const QString& text) { tell(text); });
    document_.addPage(page);
    actions_->addPage(page);
}

void MainWindow::tell(const QString& text)
{
    message_->setText(text);
    message_->setVisible(!text.isEmpty());
}

void MainWindow::showPage(int page)
{
    list_->setCurrentRow(page);
    stack_->setCurrentIndex(page);
}

void MainWindow::makeStatusLine()
{
    sentence_->setAccessibleName(tr("State of the line"));
    sentence_->setObjectName(QStringLiteral("lineSentence"));
    sentence_->setWordWrap(true);
    sentence_->setContentsMargins(8, 0, 0, 0);
    cycle_->setAccessibleName(tr("Cycle time"));
    cycle_->setToolTip(tr("How long it takes until every value has been read once more"));
    lock_->setObjectName(QStringLiteral("lock"));
    lock_->setCheckable(true);
    lock_->setFocusPolicy(Qt::StrongFocus);
    connect(lock_, &QToolButton::clicked, this, [this]() { toggleLock(); });
    statusBar()->addWidget(sentence_, 1);
    statusBar()->addPermanentWidget(cycle_);
    statusBar()->addPermanentWidget(lock_);
    statusBar()->setSizeGripEnabled(false);
}

void MainWindow::showState()
{
    const LineState& state = desk_.state();
    const bool isSilent = desk_.book().isSilent();
    const bool isAtWork = state.phase == LinePhase::open && !isSilent;
    const int old = isAtWork ? oldValues(desk_) : 0;
    const QString sentence = lineSentence(desk_.shownState(), isSilent, desk_.statistics().get());
    sentence_->setText(old == 0 ? sentence
                                : tr("%1 Old: %n value(s).", nullptr, old).arg(sentence));
    const double cycleMs = std::chrono::duration<double, std::milli>(state.cycle).count();
    constexpr double leastMs = 0.05; // else nobody was asked: all stations are silent
    const bool isRunning = state.phase == LinePhase::open && state.cycles > 0 && cycleMs >= leastMs;
    cycle_->setText(isRunning ? tr("a cycle takes %1 ms").arg(cycleMs, 0, 'f', 1) : QString());
    lock_->setVisible(desk_.hasLine());
    lock_->setEnabled((state.phase == LinePhase::open || state.isSimulated) &&
                      (state.isUnlocked || !isSilent));
    lock_->setChecked(state.isUnlocked);
    lock_->setText(state.isUnlocked ? tr("\u26a0 Writing is unlocked") : tr("Writing is locked"));
    lock_->setToolTip(state.isUnlocked
                          ? tr("Lock writing on this line")
                          : tr("Allow writing on this line, until it is closed or its port goes"));
}

void MainWindow::toggleLock()
{
    const bool unlock = !desk_.state().isUnlocked;
    lock_->setChecked(!unlock); // until the line says so
    if (unlock && !desk_.state().isSimulated &&
        !saysYes(
            this, tr("Unlock writing"),
            tr("From now on, what is clicked or typed here changes values in the controller on "
               "%1. Unlock writing?")
                .arg(QString::fromStdString(desk_.state().port))))
        return;
    desk_.setUnlocked(unlock);
}

// The pictures are drawn in the palette's colours.
void MainWindow::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::PaletteChange)
        return;
    for (int i = 0; i < list_->count(); ++i)
        list_->item(i)->setIcon(pages_.at(static_cast<std::size_t>(i))->icon());
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    isClosing_ = true;
    const bool mayClose = !asksToSave_ || actions_->mayLeave();
    isClosing_ = false;
    if (mayClose && asksToSave_)
        actions_->dropUnsaved();
    event->setAccepted(mayClose);
}

void MainWindow::leave()
{
    actions_->keepUnsaved();
    // What is open over the window may be answered by nobody any more.
    const bool isAsking = isClosing_ || QApplication::activeModalWidget();
    if (!isClosing_) {
        asksToSave_ = false;
        close();
        asksToSave_ = true;
    }
    if (isAsking)
        QApplication::quit();
}

void MainWindow::showTitle()
{
    setWindowTitle(tr("%1[*] \u2013 dov417 panel").arg(document_.name()));
    setWindowModified(document_.isModified());
}

// ---- how the window is arranged -----------------------------------------------------------------

OrderedJson MainWindow::layout() const
{
    OrderedJson layout = {{"page", list_->currentRow() + 1},
                          {"width", width()},
                          {"height", height()},
                          {"maximized", isMaximized()}};
    layout.update(partsLayout(*this));
    return layout;
}

std::function<void()> MainWindow::preparedLayout(const OrderedJson& layout)
{
    const WindowLayout wanted = windowLayout(layout);
    const std::function<void()> arrangeParts = preparedParts(*this, layout);
    return [this, wanted, arrangeParts]() {
        if (wanted.isMaximized)
            showMaximized();
        else if (wanted.size.isValid())
            resize(wanted.size);
        arrangeParts();
        if (wanted.page > 0 && wanted.page <= static_cast<int>(pages_.size()))
            showPage(wanted.page - 1);
    };
}

void MainWindow::makeHelpMenu()
{
    QMenu* const help = menuBar()->addMenu(tr("&Help"));
    QAction* const keys = help->addAction(tr("&Keys"), this, [this]() { showKeys(*this); });
    keys->setShortcut(QKeySequence::HelpContents);
    keys->setObjectName(QStringLiteral("keys"));
    help->addAction(tr("&About"), this, [this]() { showAbout(*this, desk_.library()); });
}

} // namespace dov417
