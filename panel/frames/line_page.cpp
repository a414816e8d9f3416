#include "panel/frames/line_page.h"

#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>

#include "line/frame_bytes.h"
#include "line/frame_fields.h"
#include "line/frame_text.h"
#include "panel/desk/panel_icons.h"

namespace dov417 {

namespace {

constexpr std::size_t maxWaiting = LineModel::maxRows;

} // namespace

LinePage::LinePage(PanelDesk& desk)
    : PanelPage(desk), model_(desk.areas()), table_(new FrameTable), fields_(new QTableWidget),
      hold_(new QPushButton(tr("Stand s&till"))), back_(new QPushButton(tr("&Back to the line"))),
      standing_(new QLabel)
{
    makeTable();
    makeFields();
    standing_->setWordWrap(true);
    standing_->setObjectName(QStringLiteral("standing"));
    auto* const splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("lineSplit"));
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
    const auto look = [this]() {
        const bool isNone = filter_.rowCount() == 0 && model_.rowCount() > 0;
        if (isNone == isNoneShown_)
            return;
        isNoneShown_ = isNone;
        showWhatStands();
    };
    connect(&filter_, &QAbstractItemModel::rowsInserted, this, look);
    connect(&filter_, &QAbstractItemModel::rowsRemoved, this, look);
    connect(&filter_, &QAbstractItemModel::modelReset, this, look);
    connect(&model_, &QAbstractItemModel::rowsInserted, this, look);
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

// ---- what passes ----------------------------------------------------------------------------

void LinePage::passed(const std::vector<Passed>& frames, long long notTold)
{
    if (!log_.isEmpty())
        return;
    const LineRow* const before = notTold > 0         ? nullptr
                                  : !waiting_.empty() ? &waiting_.back()
                                                      : model_.lastRow();
    const std::vector<LineRow> rows = model_.rowsOf(frames, before);
    if (isHeld_) {
        notShown_ += notTold;
        waiting_.insert(waiting_.end(), rows.begin(), rows.end());
        if (waiting_.size() > maxWaiting) {
            const auto surplus = static_cast<std::ptrdiff_t>(waiting_.size() - maxWaiting / 2);
            notShown_ += surplus;
            waiting_.erase(waiting_.begin(), waiting_.begin() + surplus);
        }
        showWhatStands();
        return;
    }
    model_.add(rows, notTold);
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

// A person, at a place in the table: that stays where it is, but for its end, which runs.
void LinePage::lookAt(bool isEnd)
{
    if (log_.isEmpty() && isHeld_ == isEnd)
        setHeld(!isEnd);
}

void LinePage::showWhatStands()
{
    hold_->setChecked(isHeld_);
    hold_->setVisible(log_.isEmpty());
    back_->setVisible(!log_.isEmpty());
    const int waiting = static_cast<int>(waiting_.size());
    const QString none = tr("None of the rows is what is asked for above.");
    standing_->setText(!log_.isEmpty() ? tr("The log %1, not the line.").arg(log_) +
                                             (isNoneShown_ ? QLatin1Char(' ') + none : QString())
                       : isNoneShown_ ? none
                       : isHeld_      ? tr("It stands still; %n more have passed since. "
                                                "The line goes on.",
                                           nullptr, waiting)
                                      : QString());
}

void LinePage::backToLine()
{
    const bool wasLog = !log_.isEmpty();
    log_.clear();
    waiting_.clear();
    notShown_ = 0;
    isHeld_ = false;
    model_.clear();
    showWhatStands();
    showFields();
    if (wasLog)
        emit lineShown();
}

// ---- files ----------------------------------------------------------------------------------

bool LinePage::openLog(const QString& file)
{
    RecordedLog log;
    try {
        log = readRecordedLog(file.toStdString());
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    model_.load(log);
    log_ = file;
    logWire_ = log.wire ? toText(*log.wire) : std::string();
    waiting_.clear();
    isHeld_ = false;
    showWhatStands();
    showFields();
    emit told(QString());
    emit logShown(log);
    return true;
}

bool LinePage::saveLog(const QString& file)
{
    try {
        model_.save(file.toStdString(), log_.isEmpty() ? desk_.state().wire : logWire_);
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
    if (log_.isEmpty()) {
        setHeld(false); // what has waited may hold it
        setHeld(true);
    }
    const std::optional<int> row = model_.rowOfRequest(number);
    if (!row) {
        setHeld(false);
        emit told(tr("The page of the line does not keep this frame."));
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
