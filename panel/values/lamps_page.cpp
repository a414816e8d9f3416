#include "panel/values/lamps_page.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QVBoxLayout>

#include "panel/desk/panel_icons.h"
#include "panel/desk/panel_settings.h"
#include "panel/desk/state_words.h"
#include "panel/desk/yes_question.h"
#include "panel/values/lamp_delegate.h"
#include "text/values.h"

namespace dov417 {

namespace {

// In no project: a file that somebody else made is not to switch the question off.
const char* const asksKey = "asksBeforeABitIsWritten";

} // namespace

LampsPage::LampsPage(PanelDesk& desk)
    : PanelPage(desk), model_(desk), table_(new QTableView),
      asks_(new QCheckBox(tr("As&k before a bit is written"))), empty_(new QLabel)
{
    table_->setModel(&model_);
    table_->setObjectName(QStringLiteral("lamps"));
    table_->setAccessibleName(tr("Bits, a word in each row"));
    table_->setItemDelegate(new LampDelegate(table_));
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setTabKeyNavigation(false);
    table_->setShowGrid(false);
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table_->horizontalHeader()->setMinimumSectionSize(table_->fontMetrics().height() * 2);
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(
        table_->fontMetrics().height() * LampDelegate::lines + 4);
    table_->installEventFilter(this);
    asks_->setObjectName(QStringLiteral("asks"));
    asks_->setChecked(panelSettings().value(QLatin1String(asksKey), true).toBool());
    empty_->setText(tr("No bits are watched. Addresses of bits, as M_bit:1.0..1.15, are added on "
                       "the page of values."));
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setWordWrap(true);
    auto* const legend = new QLabel(
        tr("1: on, 0: off. With a broken ring the lamp is not known to be so at present: %1 old, "
           "%2 being written, %3 the last write failed, ? never read. A click, or the space bar, "
           "writes the other state.")
            .arg(symbolOf(ValueState::old), symbolOf(ValueState::beingWritten),
                 symbolOf(ValueState::failed)));
    legend->setWordWrap(true);
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(empty_);
    rows->addWidget(table_, 1);
    rows->addWidget(legend);
    rows->addWidget(asks_);
    connect(asks_, &QCheckBox::toggled, this,
            [](bool isOn) { panelSettings().setValue(QLatin1String(asksKey), isOn); });
    connect(table_, &QTableView::clicked, this,
            [this](const QModelIndex& index) { toggle(index); });
    connect(&model_, &QAbstractItemModel::modelReset, this, [this]() { showWhatThereIs(); });
    connect(&desk, &PanelDesk::writesChanged, this, [this]() { emit told(QString()); });
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() {
        isStale_ = true;
        // Thousands of bits take long, and nobody looks at them here.
        if (isVisible())
            settle();
        else
            model_.clear();
    });
    showWhatThereIs();
}

QString LampsPage::title() const
{
    return tr("Lamps");
}

QIcon LampsPage::icon() const
{
    return iconOf(PanelIcon::lamps);
}

void LampsPage::settle()
{
    if (!isStale_)
        return;
    isStale_ = false;
    model_.beginAnew();
}

void LampsPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    settle();
}

void LampsPage::showWhatThereIs()
{
    const bool isAny = model_.rowCount() > 0;
    empty_->setVisible(!isAny);
    table_->setVisible(isAny);
}

bool LampsPage::eventFilter(QObject* object, QEvent* event)
{
    if (object == table_ && event->type() == QEvent::KeyPress) {
        const auto& press = *static_cast<QKeyEvent*>(event);
        const int key = press.key();
        if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (!press.isAutoRepeat()) // a key that is held is one wish
                toggle(table_->currentIndex());
            return true;
        }
    }
    return PanelPage::eventFilter(object, event);
}

void LampsPage::toggle(const QModelIndex& index)
{
    const PanelValue* const found = model_.valueAt(index);
    if (!found)
        return;
    // A copy: while it is asked, something else may be watched.
    const PanelValue value = *found;
    const QString name = QString::fromStdString(value.label.name);
    const std::optional<bool> on = model_.isOn(index);
    const ValueStanding standing = model_.standingAt(index);
    if (!value.locked.empty()) {
        emit told(QString::fromStdString(value.locked));
        return;
    }
    if (desk_.state().phase == LinePhase::away) {
        emit told(tr("%1: %2").arg(name, portIsAway()));
        return;
    }
    if (!desk_.state().isUnlocked) {
        emit told(tr("Writing is locked: unlock it in the status line to write %1.").arg(name));
        return;
    }
    if (!on || standing.isOld || standing.state == ValueState::beingWritten) {
        emit told(tr("%1 is not known at present, so there is no other state to write: %2. The "
                     "page of values writes it all the same.")
                      .arg(name, standingText(standing)));
        return;
    }
    const bool target = !*on;
    if (asks_->isChecked() && !saysYes(this, tr("Write a bit"),
                                       tr("Write %1 to %2 (%3)?")
                                           .arg(target ? tr("1 (on)") : tr("0 (off)"), name,
                                                QString::fromStdString(value.label.address))))
        return;
    write(value, target);
}

void LampsPage::write(const PanelValue& value, bool on)
{
    // As its format has it: "true" of a bool is the other one's "1".
    const unsigned char bit = on ? 1 : 0;
    const std::string text = valueTexts(Width::bit, value.label.format, &bit, 1).front();
    try {
        desk_.write(value, text);
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
    }
}

} // namespace dov417
