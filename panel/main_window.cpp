#include "panel/main_window.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QShortcut>
#include <QStatusBar>
#include <QVBoxLayout>

#include "panel/lamps_page.h"
#include "panel/line_page.h"
#include "panel/start_page.h"
#include "panel/state_words.h"
#include "panel/trends_page.h"
#include "panel/values_page.h"

namespace dov417 {

MainWindow::MainWindow(PanelDesk& desk)
    : desk_(desk), list_(new QListWidget), stack_(new QStackedWidget), sentence_(new QLabel),
      cycle_(new QLabel), message_(new QLabel), lock_(new QToolButton)
{
    setWindowTitle(tr("dov417 panel"));
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

    auto* const start = new StartPage(desk);
    connect(start, &StartPage::opened, this, [this]() { showPage(1); });
    addPage(start);
    auto* const values = new ValuesPage(desk);
    addPage(values);
    addPage(new LampsPage(desk));
    auto* const trends = new TrendsPage(desk);
    addPage(trends);
    connect(values, &ValuesPage::trendsAsked, this,
            [this, trends](const std::vector<Address>& addresses) {
                trends->showValues(addresses);
                showPage(stack_->indexOf(trends));
            });
    addPage(new LinePage(desk));
    list_->setFixedWidth(list_->sizeHintForColumn(0) + 4 * list_->frameWidth() + 16);
    connect(list_, &QListWidget::currentRowChanged, stack_, &QStackedWidget::setCurrentIndex);
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { showState(); });
    showPage(0);
    showState();
}

void MainWindow::addPage(PanelPage* page)
{
    const int number = static_cast<int>(pages_.size()) + 1;
    pages_.push_back(page);
    stack_->addWidget(page);
    auto* const item = new QListWidgetItem(page->icon(), page->title(), list_);
    item->setToolTip(QStringLiteral("Ctrl+%1").arg(number));
    auto* const shortcut = new QShortcut(QKeySequence(item->toolTip()), this);
    connect(shortcut, &QShortcut::activated, this, [this, number]() { showPage(number - 1); });
    connect(page, &PanelPage::told, this, [this](const QString& text) {
        message_->setText(text);
        message_->setVisible(!text.isEmpty());
    });
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
    sentence_->setText(lineSentence(state, desk_.book().isSilent()));
    const bool isRunning = state.phase == LinePhase::open && state.cycles > 0;
    const double cycleMs = std::chrono::duration<double, std::milli>(state.cycle).count();
    cycle_->setText(isRunning ? tr("a cycle takes %1 ms").arg(cycleMs, 0, 'f', 1) : QString());
    lock_->setVisible(desk_.hasLine());
    lock_->setChecked(state.isUnlocked);
    lock_->setText(state.isUnlocked ? tr("\u26a0 Writing is unlocked") : tr("Writing is locked"));
    lock_->setToolTip(state.isUnlocked ? tr("Lock writing on this line")
                                       : tr("Allow writing on this line, until it is closed"));
}

void MainWindow::toggleLock()
{
    const bool unlock = !desk_.state().isUnlocked;
    lock_->setChecked(!unlock); // until the line says so
    if (unlock && !desk_.state().isSimulated) {
        const auto answer = QMessageBox::question(
            this, tr("Unlock writing"),
            tr("From now on, what is clicked or typed here changes values in the controller on "
               "%1. Unlock writing?")
                .arg(QString::fromStdString(desk_.state().port)));
        if (answer != QMessageBox::Yes)
            return;
    }
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
    const int writes = static_cast<int>(desk_.writesUnderWay());
    if (writes > 0) {
        const auto answer = QMessageBox::question(
            this, tr("Writes are under way"),
            tr("%n value(s) are being written. What becomes of them is not known if the panel is "
               "closed now. Close it?",
               nullptr, writes));
        if (answer != QMessageBox::Yes) {
            event->ignore();
            return;
        }
    }
    event->accept();
}

} // namespace dov417
