#include "panel/frames/wire_page.h"

#include <QDateTime>
#include <QKeyEvent>
#include <QScrollArea>
#include <QVBoxLayout>

#include "panel/desk/panel_clock.h"
#include "panel/desk/panel_icons.h"
#include "panel/frames/wire_words.h"

namespace dov417 {

namespace {

const char* const cyclesMember = "cycles";

QString momentText(LogTime time)
{
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(millis).toString(
        QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

std::optional<SerialFormat> formatOf(const std::string& wire)
{
    if (wire.empty())
        return std::nullopt;
    return parseRtuFormat(wire);
}

} // namespace

WirePage::WirePage(PanelDesk& desk)
    : PanelPage(desk), view_(new WireView(times_, desk.areas())), table_(new QTableView),
      follow_(new QPushButton(tr("&Follow the line"))),
      back_(new QPushButton(tr("&Back to the line"))), cycles_(new QSpinBox), distance_(new QLabel),
      known_(new QLabel), frame_(new QLabel), sentence_(new QLabel)
{
    view_->setObjectName(QStringLiteral("wire"));
    auto* const scroll = new QScrollArea;
    scroll->setWidget(view_);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setFrameShape(QFrame::NoFrame);
    known_->setWordWrap(true);
    known_->setObjectName(QStringLiteral("known"));
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(makeTools());
    rows->addWidget(known_);
    rows->addWidget(scroll, 1);
    rows->addWidget(makeBelow());
    connect(
        &desk, &PanelDesk::framesPassed, this,
        [this](const std::vector<Passed>& frames, long long notTold) { passed(frames, notTold); });
    connect(&desk, &PanelDesk::lineBegan, this, [this]() { lineBegan(); });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { stateChanged(); });
    view_->setStationNames(desk.stationNames());
    connect(&desk, &PanelDesk::stationNamesChanged, this,
            [this]() { view_->setStationNames(desk_.stationNames()); });
    connect(view_, &WireView::windowMoved, this, [this]() { showWindow(); });
    connect(view_, &WireView::currentChanged, this, [this]() { showFrame(); });
    connect(view_, &WireView::rulersChanged, this, [this]() { showDistance(); });
    connect(view_, &WireView::frameChosen, this, &WirePage::frameWanted);
    pictureTimer_.setInterval(picturePause);
    connect(&pictureTimer_, &QTimer::timeout, this, [this]() { picture(); });
    pictureTimer_.start();
    showWindow();
    showFrame();
    showDistance();
    showWhatIsKnown();
}

QString WirePage::title() const
{
    return tr("Time on the wire");
}

QIcon WirePage::icon() const
{
    return iconOf(PanelIcon::wire);
}

// ---- in a project ---------------------------------------------------------------------------

std::string WirePage::settingsName() const
{
    return "timeOnTheWire";
}

OrderedJson WirePage::settings() const
{
    return {{cyclesMember, view_->cycles()}};
}

std::function<void()> WirePage::prepared(const OrderedJson& settings)
{
    constexpr int byItself = 2;
    const OrderedJson cycles = settings.value(cyclesMember, OrderedJson(byItself));
    if (!cycles.is_number_integer() || cycles < 1 || cycles > WireView::maxCycles)
        throw UsageFailure(std::string(cyclesMember) + ": must be a whole number from 1 to " +
                           std::to_string(WireView::maxCycles));
    return [this, count = cycles.get<int>()]() {
        const QSignalBlocker quiet(cycles_);
        cycles_->setValue(count);
        view_->setCycles(count);
    };
}

// ---- what passes ----------------------------------------------------------------------------

void WirePage::passed(const std::vector<Passed>& frames, long long notTold)
{
    learnWire();
    times_.add(frames, notTold);
    hasNews_ = true;
}

void WirePage::lineBegan()
{
    times_.clear();
    wire_.clear();
    if (!log_)
        view_->forget();
    showWhatIsKnown();
}

// After what has passed was told: see PanelDesk::apply().
void WirePage::stateChanged()
{
    learnWire();
    if (desk_.state().phase != LinePhase::open)
        times_.lineGone();
}

void WirePage::learnWire()
{
    if (desk_.state().wire == wire_)
        return;
    wire_ = desk_.state().wire;
    times_.setWire(formatOf(wire_));
}

void WirePage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    hasNews_ = true;
    picture();
}

// Also of a button, which one has just pressed to set a ruler.
void WirePage::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        view_->removeRulers();
    else
        PanelPage::keyPressEvent(event);
}

void WirePage::picture()
{
    if (!isVisible() || log_)
        return;
    // A port that is away is waited for; without a line nothing goes on.
    const LinePhase phase = desk_.state().phase;
    const bool goesOn =
        (phase == LinePhase::open || phase == LinePhase::away) && !desk_.book().isSilent();
    if (!hasNews_ && !goesOn)
        return;
    hasNews_ = false;
    view_->refresh(goesOn ? panelNow() : times_.end());
    showWhatIsKnown();
}

// ---- a recording -----------------------------------------------------------------------------

void WirePage::showLog(const RecordedLog& log)
{
    log_ = log;
    logTimes_ = timesOf(log);
    view_->showTimes(logTimes_, true);
    showParts();
}

void WirePage::showLine()
{
    if (!log_)
        return;
    log_.reset();
    view_->showTimes(times_, false);
    logTimes_.clear();
    showParts();
    hasNews_ = true;
    picture();
}

void WirePage::showParts()
{
    follow_->setVisible(!log_);
    back_->setVisible(log_.has_value());
    showFrame();
    showWhatIsKnown();
}

QString WirePage::recordingText() const
{
    QString text =
        tr("A recording, not the line: %1, from %2 to %3.")
            .arg(QString::fromStdString(log_->file), momentText(log_->entries.front().time),
                 momentText(log_->entries.back().time));
    if (logTimes_.frames().size() < requestsIn(*log_))
        text += tr(" Only its last %n frame(s) are here.", nullptr,
                   static_cast<int>(logTimes_.frames().size()));
    if (!logTimes_.knowsBytes())
        text += tr(" It does not tell the line's speed: what is drawn is when a request was handed "
                   "over, and when its reply came.");
    else if (logTimes_.isFaster())
        text +=
            tr(" Bytes came faster than the line it names carries them: what is drawn is when a "
               "request was handed over, and when its reply came.");
    return text;
}

// ---- in words -------------------------------------------------------------------------------

void WirePage::showWindow()
{
    follow_->setChecked(view_->isFollowing());
    showShares();
}

void WirePage::showShares()
{
    const WireShares shares = sharesOf(shown(), view_->from(), view_->to());
    shares_.show(shares);
    sentence_->setText(shown().knowsBytes() ? sharesText(shares) : QString());
}

void WirePage::showFrame()
{
    const WireFrame* const frame = shown().find(view_->current());
    if (!frame) {
        frame_->setText(tr("Point at a frame, or go to one with \u2190 and \u2192, to see what was "
                           "asked, what came of it, and what took how long."));
        view_->setAccessibleDescription(QString());
        return;
    }
    const LogTime when =
        log_ ? entryOfNumber(*log_, frame->told.number).time : panelLogTime(frame->told.sendBegin);
    const QString text = momentText(when) + QLatin1Char('\n') + frameText(*frame, desk_.areas());
    frame_->setText(text);
    view_->setAccessibleDescription(text);
}

void WirePage::showDistance()
{
    const auto& a = view_->ruler(WireRuler::a);
    const auto& b = view_->ruler(WireRuler::b);
    distance_->setText(a && b ? tr("A to B: %1").arg(wireTimeText(*b > *a ? *b - *a : *a - *b))
                              : QString());
}

void WirePage::showWhatIsKnown()
{
    const bool hasPassed = !times_.frames().empty();
    const QString text =
        log_         ? recordingText()
        : !hasPassed ? QString()
        : !times_.knowsBytes()
            ? tr("Over a network nobody tells when a byte was on the wire. What is drawn: when a "
                 "request was handed over, and when its reply came.")
        : times_.isFaster()
            ? tr("Bytes come faster than %1 carries them, as from a program on this computer. What "
                 "is drawn: when a request was handed over, and when its reply came.")
                  .arg(QString::fromStdString(wire_))
            : QString();
    known_->setText(text);
    known_->setVisible(!text.isEmpty());
}

} // namespace dov417
