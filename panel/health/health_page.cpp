#include "panel/health/health_page.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QStringList>
#include <QVBoxLayout>
#include <algorithm>

#include "panel/desk/column_widths.h"
#include "panel/desk/panel_clock.h"
#include "panel/desk/panel_icons.h"
#include "panel/desk/row_table.h"
#include "panel/health/line_advice.h"

namespace dov417 {

HealthPage::HealthPage(PanelDesk& desk)
    : PanelPage(desk), advice_(new QLabel), link_(new QLabel), brief_(new QLabel),
      band_(new LinkBand), cycles_(new CyclePlot), table_(new QTableView),
      copy_(new QPushButton(tr("&Copy all counters")))
{
    makeTable();
    advice_->setObjectName(QStringLiteral("advice"));
    advice_->setAccessibleName(tr("Advice"));
    link_->setObjectName(QStringLiteral("linkHistory"));
    brief_->setObjectName(QStringLiteral("brief"));
    for (QLabel* const label : {advice_, link_, brief_}) {
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    QFont larger = advice_->font();
    larger.setPointSizeF(larger.pointSizeF() * 1.2);
    advice_->setFont(larger);
    band_->setObjectName(QStringLiteral("band"));
    cycles_->setObjectName(QStringLiteral("cycleTimes"));
    copy_->setObjectName(QStringLiteral("copy"));
    copy_->setToolTip(tr("As text, for whoever is asked for help"));
    auto* const words = new QVBoxLayout;
    words->addWidget(brief_, 1, Qt::AlignTop);
    words->addWidget(copy_, 0, Qt::AlignLeft);
    auto* const middle = new QHBoxLayout;
    middle->addLayout(words, 2);
    middle->addWidget(cycles_, 3);
    cycles_->setMinimumHeight(fontMetrics().height() * 11);
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(advice_);
    rows->addWidget(band_);
    rows->addWidget(link_);
    rows->addLayout(middle, 2);
    rows->addWidget(table_, 3);
    connect(&desk, &PanelDesk::projectBegan, this, [this]() { history_.clear(); });
    connect(&desk, &PanelDesk::lineBegan, this, [this]() { lineBegan(); });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { collect(); });
    connect(&desk, &PanelDesk::stationNamesChanged, this, [this]() { showCounters(); });
    connect(copy_, &QPushButton::clicked, this, [this]() { copyAll(); });
    pictureTimer_.setInterval(picturePause);
    connect(&pictureTimer_, &QTimer::timeout, this, [this]() { picture(); });
    pictureTimer_.start();
    showCounters();
    showAdvice();
}

QString HealthPage::title() const
{
    return tr("Health");
}

QIcon HealthPage::icon() const
{
    return iconOf(PanelIcon::health);
}

void HealthPage::makeTable()
{
    table_->setModel(&model_);
    table_->setObjectName(QStringLiteral("counters"));
    table_->setAccessibleName(tr("What became of each request"));
    showRows(*table_, roomInRow);
    // Name and numbers; the others as their heads need.
    setColumnLetters(*table_, {28, 9, 9, 9, 9, 9, 9, 9, 0, 0});
    constexpr int rowsToMeasure = 300; // from those that are seen on
    table_->horizontalHeader()->setResizeContentsPrecision(rowsToMeasure);
    fillWithLast(*table_->horizontalHeader());
}

// ---- what is counted ------------------------------------------------------------------------

void HealthPage::lineBegan()
{
    recent_.clear();
    collected_.reset();
    shown_.reset();
    collect();
    showCounters();
    showAdvice();
}

void HealthPage::collect()
{
    history_.add(panelNow(), standingOf(desk_.state(), desk_.book().isSilent()));
    const std::shared_ptr<const LinkStatistics>& latest = desk_.statistics();
    if (!latest || latest == collected_)
        return;
    collected_ = latest;
    recent_.add(latest);
}

void HealthPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    picture();
}

void HealthPage::picture()
{
    if (!isVisible())
        return;
    collect();
    const Clock::time_point now = panelNow();
    band_->show(history_, now);
    link_->setText(
        tr("The last ten minutes: %1.").arg(historyText(history_, now - LinkBand::shown)));
    if (collected_ != shown_) {
        shown_ = collected_;
        showCounters();
    }
    showAdvice(); // the line may have gone since
}

void HealthPage::showCounters()
{
    copy_->setEnabled(shown_ != nullptr);
    cycles_->show(shown_ ? shown_->cycles : Durations());
    model_.show(shown_ ? *shown_ : LinkStatistics(), desk_.stationNames());
    for (const HealthModel::Column column :
         {HealthModel::others, HealthModel::abandoned, HealthModel::notSent, HealthModel::notAsked})
        table_->setColumnHidden(column, !model_.hasAny(column));
    fitWords();
    if (!shown_) {
        brief_->setText(tr("Nothing has been counted yet."));
        return;
    }
    QStringList lines;
    for (const std::string& line : briefStatistics(*shown_, panelNow()))
        lines.append(QString::fromStdString(line));
    brief_->setText(lines.join(QLatin1Char('\n')));
}

// A remark is a sentence, and has its row; exceptions have the room for their words.
void HealthPage::fitWords()
{
    table_->clearSpans();
    for (int row = 0; row < model_.rowCount(); ++row)
        if (model_.isRemark(row))
            table_->setSpan(row, 0, 1, HealthModel::columns);
    if (!table_->isColumnHidden(HealthModel::others)) // else it has what is left
        table_->resizeColumnToContents(HealthModel::exceptions);
}

void HealthPage::showAdvice()
{
    if (!shown_) {
        advice_->setText(
            tr("As soon as a line is open and values are watched, it is said here what "
               "is wrong, if anything is."));
        return;
    }
    const LinkStatistics recent = recent_.recent();
    const RequestCounters total = recent.total();
    const long long asked = total.sent + total.notSent;
    const long long bad = asked - total.good - total.forgotten - total.badFor(Reason::broadcast);
    const LinkStanding standing = standingOf(desk_.state(), desk_.book().isSilent());
    QStringList texts;
    for (const LineAdvice& each : adviceOn(recent, desk_.state().wire))
        texts.append(QStringLiteral("\u26a0 ") + each.text);
    if (texts.isEmpty() && bad > 0)
        texts.append(tr("%1 of the last minute's %2 requests had no good reply; why, the counters "
                        "tell. They are too few, or of no pattern that is known.")
                         .arg(bad)
                         .arg(asked));
    if (texts.isEmpty())
        texts.append(standing == LinkStanding::good
                         ? tr("\u2713 Each request of the last minute had a good reply.")
                         : tr("The link is not good at present: %1.").arg(wordOf(standing)));
    advice_->setText(texts.join(QLatin1Char('\n')));
}

void HealthPage::copyAll()
{
    if (!shown_)
        return;
    QApplication::clipboard()->setText(QString::fromStdString(fullStatistics(*shown_, panelNow())));
    emit told(tr("The counters are on the clipboard, as dov417 --stats prints them."));
}

} // namespace dov417
