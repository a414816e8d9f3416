#include "panel/line_page.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>

#include "line/frame_bytes.h"
#include "line/frame_fields.h"
#include "line/frame_text.h"
#include "panel/panel_icons.h"

namespace dov417 {

namespace {

constexpr std::size_t maxWaiting = LineModel::maxRows;

void makePlain(QTableView* table)
{
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
}

} // namespace

LinePage::LinePage(PanelDesk& desk)
    : PanelPage(desk), model_(desk.areas()), table_(new QTableView), fields_(new QTableWidget),
      hold_(new QPushButton(tr("Stand s&till"))), back_(new QPushButton(tr("&Back to the line"))),
      standing_(new QLabel)
{
    makeTable();
    fields_->setColumnCount(4);
    fields_->setHorizontalHeaderLabels({tr("Byte"), tr("Bytes"), tr("What it is"), tr("Meaning")});
    fields_->setAccessibleName(tr("The chosen frame, byte by byte"));
    fields_->setObjectName(QStringLiteral("fields"));
    fields_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    fields_->horizontalHeader()->setStretchLastSection(true);
    makePlain(fields_);
    standing_->setWordWrap(true);
    standing_->setObjectName(QStringLiteral("standing"));
    auto* const splitter = new QSplitter(Qt::Vertical);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(table_);
    splitter->addWidget(fields_);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(makeTools());
    rows->addWidget(makeFiles());
    rows->addWidget(splitter, 1);
    connect(
        &desk, &PanelDesk::framesPassed, this,
        [this](const std::vector<Passed>& frames, long long notTold) { passed(frames, notTold); });
    connect(&desk, &PanelDesk::lineBegan, this, [this]() { backToLine(); });
    connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this]() { showFields(); });
    showWhatStands();
    showFields();
}

QString LinePage::title() const
{
    return tr("Line");
}

QIcon LinePage::icon() const
{
    return iconOf(PanelIcon::line);
}

void LinePage::makeTable()
{
    filter_.setSourceModel(&model_);
    table_->setModel(&filter_);
    table_->setObjectName(QStringLiteral("frames"));
    table_->setAccessibleName(tr("What passed on the line"));
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    makePlain(table_);
    const int letter = table_->fontMetrics().averageCharWidth();
    table_->setColumnWidth(LineModel::when, letter * 16);
    table_->setColumnWidth(LineModel::since, letter * 12);
    table_->setColumnWidth(LineModel::direction, letter * 14);
    table_->setColumnWidth(LineModel::meaning, letter * 70);
    table_->horizontalHeader()->setStretchLastSection(true);
    // Who chooses a frame wants to look at it.
    connect(table_, &QTableView::clicked, this, [this]() { setHeld(true); });
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

// ---- what passes ----------------------------------------------------------------------------

void LinePage::passed(const std::vector<Passed>& frames, long long notTold)
{
    if (!log_.isEmpty())
        return;
    if (isHeld_) {
        notShown_ += notTold;
        waiting_.insert(waiting_.end(), frames.begin(), frames.end());
        if (waiting_.size() > maxWaiting) {
            const auto surplus = static_cast<std::ptrdiff_t>(waiting_.size() - maxWaiting / 2);
            notShown_ += surplus;
            waiting_.erase(waiting_.begin(), waiting_.begin() + surplus);
        }
        showWhatStands();
        return;
    }
    model_.add(frames, notTold);
    table_->scrollToBottom();
}

void LinePage::setHeld(bool isHeld)
{
    isHeld_ = isHeld;
    if (!isHeld) {
        model_.add(waiting_, notShown_);
        waiting_.clear();
        notShown_ = 0;
        table_->scrollToBottom();
    }
    showWhatStands();
}

void LinePage::showWhatStands()
{
    hold_->setChecked(isHeld_);
    hold_->setVisible(log_.isEmpty());
    back_->setVisible(!log_.isEmpty());
    const int waiting = static_cast<int>(waiting_.size());
    standing_->setText(!log_.isEmpty() ? tr("The log %1, not the line.").arg(log_)
                       : isHeld_       ? tr("It stands still; %n more have passed since. "
                                                  "The line goes on.",
                                            nullptr, waiting)
                                       : QString());
}

void LinePage::backToLine()
{
    log_.clear();
    waiting_.clear();
    notShown_ = 0;
    isHeld_ = false;
    model_.clear();
    showWhatStands();
    showFields();
}

// ---- files ----------------------------------------------------------------------------------

bool LinePage::openLog(const QString& file)
{
    try {
        model_.load(file.toStdString());
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    log_ = file;
    waiting_.clear();
    isHeld_ = false;
    showWhatStands();
    emit told(QString());
    return true;
}

bool LinePage::saveLog(const QString& file)
{
    try {
        model_.save(file.toStdString());
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    emit told(tr("%1 is written; dov417 trace reads it, too.").arg(file));
    return true;
}

// ---- a frame ----------------------------------------------------------------------------------

bool LinePage::showFrame(long long number)
{
    if (!log_.isEmpty()) {
        emit told(tr("The page of the line shows the log %1; Back to the line is a button there.")
                      .arg(log_));
        return false;
    }
    setHeld(false); // what has waited may hold it
    setHeld(true);
    const std::optional<int> row = model_.rowOfRequest(number);
    if (!row) {
        setHeld(false);
        emit told(
            tr("This frame is too long ago: the page of the line does not keep it any more."));
        return false;
    }
    const QModelIndex index = filter_.mapFromSource(model_.index(*row, 0));
    if (!index.isValid()) {
        emit told(tr("The page of the line does not show this frame: it shows only what is asked "
                     "for above its table."));
        return false;
    }
    table_->setCurrentIndex(index);
    table_->scrollTo(index, QAbstractItemView::PositionAtCenter);
    table_->setFocus();
    emit told(QString());
    return true;
}

void LinePage::showFields()
{
    const QModelIndex index = filter_.mapToSource(table_->currentIndex());
    std::vector<FrameField> parts;
    QByteArray bytes;
    if (index.isValid()) {
        const LineRow& row = model_.rowAt(index.row());
        bytes = row.entry.bytes;
        parts = row.entry.direction == Direction::sent ? requestFields(bytes)
                                                       : replyFields(bytes, row.request);
    }
    fields_->setRowCount(std::max(1, static_cast<int>(parts.size())));
    if (parts.empty()) {
        for (int column = 0; column < fields_->columnCount() - 1; ++column)
            fields_->setItem(0, column, new QTableWidgetItem);
        fields_->setItem(0, fields_->columnCount() - 1,
                         new QTableWidgetItem(tr("Choose a frame above to see it byte by byte.")));
    }
    int row = 0;
    for (const FrameField& part : parts) {
        const QStringList texts = {
            QString::number(part.first),
            QString::fromStdString(hexText(bytes.mid(part.first, part.count))),
            QString::fromStdString(part.name), QString::fromStdString(part.meaning)};
        for (int column = 0; column < texts.size(); ++column)
            fields_->setItem(row, column, new QTableWidgetItem(texts.at(column)));
        ++row;
    }
}

} // namespace dov417
