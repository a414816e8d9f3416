#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>

#include "line/frame_bytes.h"
#include "panel/desk/column_widths.h"
#include "panel/desk/row_table.h"
#include "panel/frames/line_page.h"

namespace dov417 {

namespace {

void makePlain(QTableView* table)
{
    showRows(*table, roomInRow);
}

} // namespace

void LinePage::makeTable()
{
    filter_.setSourceModel(&model_);
    table_->setModel(&filter_);
    table_->setObjectName(QStringLiteral("frames"));
    table_->setAccessibleName(tr("What passed on the line"));
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    makePlain(table_);
    setColumnLetters(*table_, {16, 12, 14, 70}); // when, since, direction, meaning
    fillWithLast(*table_->horizontalHeader());
    // Who chooses a frame wants to look at it.
    connect(table_, &QTableView::clicked, this, [this]() { setHeld(true); });
    // With the wheel, too; not what is scrolled from here.
    QScrollBar* const bar = table_->verticalScrollBar();
    connect(bar, &QScrollBar::actionTriggered, this,
            [this, bar]() { lookAt(bar->sliderPosition() == bar->maximum()); });
    table_->onWalk([this]() { lookAt(table_->currentIndex().row() == filter_.rowCount() - 1); });
}

void LinePage::makeFields()
{
    fields_->setColumnCount(4);
    fields_->setHorizontalHeaderLabels({tr("Byte"), tr("Bytes"), tr("What it is"), tr("Meaning")});
    fields_->setAccessibleName(tr("The chosen frame, byte by byte"));
    fields_->setObjectName(QStringLiteral("fields"));
    fields_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    fillWithLast(*fields_->horizontalHeader());
    makePlain(fields_);
    setColumnLetters(*fields_, {9, 14, 20}); // byte, bytes, what it is
}

QWidget* LinePage::makeTools()
{
    auto* const tools = new QWidget;
    auto* const row = new QHBoxLayout(tools);
    row->setContentsMargins(0, 0, 0, 0);
    auto* const station = new QSpinBox;
    station->setRange(0, maxStation);
    station->setSpecialValueText(tr("all stations"));
    station->setPrefix(tr("station "));
    station->setAccessibleName(tr("Show only this station"));
    station->setObjectName(QStringLiteral("station"));
    auto* const kind = new QComboBox;
    kind->setAccessibleName(tr("Show only this kind"));
    kind->setObjectName(QStringLiteral("kind"));
    kind->addItem(tr("requests, replies, all"));
    for (const Direction each :
         {Direction::sent, Direction::received, Direction::stray, Direction::note})
        kind->addItem(directionText(each), static_cast<int>(each));
    auto* const trouble = new QCheckBox(tr("t&rouble only"));
    trouble->setObjectName(QStringLiteral("trouble"));
    auto* const search = new QLineEdit;
    search->setPlaceholderText(tr("Show only rows with \u2026"));
    search->setAccessibleName(tr("Show only rows with this text"));
    search->setObjectName(QStringLiteral("lineSearch"));
    search->setClearButtonEnabled(true);
    row->addWidget(station);
    row->addWidget(kind);
    row->addWidget(trouble);
    row->addWidget(search, 1);
    connect(station, QOverload<int>::of(&QSpinBox::valueChanged), &filter_,
            &LineFilter::setStation);
    connect(kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this, kind](int at) {
        filter_.setDirection(
            at == 0 ? std::nullopt
                    : std::optional<Direction>(static_cast<Direction>(kind->itemData(at).toInt())));
    });
    connect(trouble, &QCheckBox::toggled, &filter_, &LineFilter::setTroubleOnly);
    connect(search, &QLineEdit::textChanged, &filter_, &LineFilter::setText);
    return tools;
}

QWidget* LinePage::makeFiles()
{
    auto* const files = new QWidget;
    auto* const row = new QHBoxLayout(files);
    row->setContentsMargins(0, 0, 0, 0);
    hold_->setCheckable(true);
    hold_->setObjectName(QStringLiteral("hold"));
    hold_->setToolTip(tr("Scrolling up or walking through the rows stands still, too; the end of "
                         "the table runs on"));
    back_->setObjectName(QStringLiteral("back"));
    auto* const save = new QPushButton(tr("&Save as a line log \u2026"));
    auto* const open = new QPushButton(tr("Open a line &log \u2026"));
    row->addWidget(hold_);
    row->addWidget(standing_, 1);
    row->addWidget(back_);
    row->addWidget(open);
    row->addWidget(save);
    connect(hold_, &QPushButton::clicked, this, [this](bool isOn) { setHeld(isOn); });
    connect(back_, &QPushButton::clicked, this, [this]() { backToLine(); });
    connect(save, &QPushButton::clicked, this, [this]() {
        const QString file = QFileDialog::getSaveFileName(this, tr("Save as a line log"));
        if (!file.isEmpty())
            saveLog(file);
    });
    connect(open, &QPushButton::clicked, this, [this]() {
        const QString file = QFileDialog::getOpenFileName(this, tr("Open a line log"));
        if (!file.isEmpty())
            openLog(file);
    });
    return files;
}

} // namespace dov417
