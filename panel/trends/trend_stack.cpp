#include "panel/trends/trend_stack.h"

#include <algorithm>

#include "panel/desk/panel_clock.h"

namespace dov417 {

namespace {

constexpr int maxNotes = 1000;   // of those by themselves; the oldest go first
constexpr int newsPauseMs = 200; // for what falls into a column that is drawn already

} // namespace

TrendStack::TrendStack(const TrendHistory& history, const TrendClock& clock)
    : history_(history), clock_(clock), splitter_(new QSplitter(Qt::Vertical)), timer_(this),
      turnTimer_(this)
{
    setWidgetResizable(true);
    setFrameStyle(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    splitter_->setChildrenCollapsible(false);
    setWidget(splitter_);
    timer_.setInterval(screenPauseMs);
    timer_.setTimerType(Qt::PreciseTimer);
    turnTimer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this]() { draw(); });
    connect(&turnTimer_, &QTimer::timeout, this, [this]() { draw(); });
}

// ---- the plots ------------------------------------------------------------------------------

void TrendStack::setPlots(const std::vector<TrendGroup>& groups)
{
    while (plots_.size() > groups.size()) {
        delete plots_.back();
        plots_.pop_back();
    }
    while (plots_.size() < groups.size()) {
        auto* const plot = new TrendPlot(clock_);
        plot->setMinimumHeight(plot->minimumSizeHint().height());
        splitter_->addWidget(plot);
        plots_.push_back(plot);
        follow(plot);
    }
    groups_ = groups;
    int number = 0;
    for (std::size_t i = 0; i < plots_.size(); ++i) {
        TrendPlot* const plot = plots_.at(i);
        plot->setGroup(groups.at(i), number);
        plot->setTimeShown(i + 1 == plots_.size());
        plot->setExtents(0, 0);
        plot->setNotes(notes_);
        plot->canvas()->setAccessibleName(tr("Plot %1").arg(i + 1));
        number += static_cast<int>(groups.at(i).values.size());
    }
    current_ = std::min(current_, plots_.empty() ? 0 : plots_.size() - 1);
    showCursors();
    isChanged_ = true;
    drawn_ = 0;
    draw();
}

void TrendStack::follow(TrendPlot* plot)
{
    const auto touched = [this, plot]() {
        const auto place = std::find(plots_.begin(), plots_.end(), plot);
        current_ = static_cast<std::size_t>(place - plots_.begin());
    };
    connect(plot, &TrendPlot::windowChosen, this, [this](TrendTime from, TrendTime to) {
        arrange([&](TrendView& view) { view.choose(from, to); });
    });
    connect(plot, &TrendPlot::moved, this,
            [this](double part) { arrange([&](TrendView& view) { view.move(part); }); });
    connect(plot, &TrendPlot::zoomed, this, [this](double factor, TrendTime around) {
        arrange([&](TrendView& view) { view.zoom(factor, around); });
    });
    connect(plot, &TrendPlot::pointed, this, [this, touched](TrendTime at, bool isOther) {
        touched();
        point(at, isOther ? 1 : 0);
    });
    connect(plot, &TrendPlot::keyPressed, this, [this, touched](QKeyEvent* event) {
        touched();
        pressKey(event);
    });
}

void TrendStack::setCurrent(std::size_t plot)
{
    current_ = plot;
}

void TrendStack::setPalettes()
{
    for (TrendPlot* const plot : plots_) {
        plot->setPalettes();
        plot->setNotes(notes_);
        plot->replot(); // what was drawn is kept, and its turn to be drawn may be far off
    }
    isChanged_ = true;
    draw();
}

void TrendStack::followClock()
{
    showCursors();
    showNotes();
    drawn_ = 0;
    draw();
}

void TrendStack::followValues()
{
    for (TrendPlot* const plot : plots_)
        plot->followValues();
    isChanged_ = true;
    draw();
}

void TrendStack::changeHeight(const std::function<void(TrendPlot&)>& change)
{
    if (plots_.empty())
        return;
    change(*plots_.at(current_));
    isChanged_ = true;
    draw();
}

void TrendStack::showAll()
{
    std::optional<TrendTime> first;
    std::optional<TrendTime> last;
    for (const TrendGroup& group : groups_)
        for (const TrendValue& value : group.values) {
            const std::optional<TrendTime> begin = history_.begin(value.at);
            if (!begin)
                continue;
            first = std::min(*begin, first.value_or(*begin));
            last = std::max(*history_.end(value.at), last.value_or(*begin));
        }
    if (first)
        arrange([&](TrendView& view) { view.choose(*first, *last); });
}

// ---- cursors and notes ------------------------------------------------------------------------

void TrendStack::point(TrendTime at, int cursor)
{
    cursor_ = cursor;
    setCursor(cursor, at);
}

void TrendStack::setCursor(int cursor, std::optional<TrendTime> at)
{
    cursors_.at(static_cast<std::size_t>(cursor)) = at;
    showCursors();
    isChanged_ = true;
    draw();
    emit cursorsChanged();
}

void TrendStack::clear()
{
    setPlots({});
    notes_.clear();
    for (int cursor = 0; cursor < TrendPlot::cursors; ++cursor)
        setCursor(cursor, std::nullopt);
    arrange([](TrendView& view) { view.run(); });
}

void TrendStack::showCursors()
{
    for (TrendPlot* const plot : plots_)
        for (int cursor = 0; cursor < TrendPlot::cursors; ++cursor)
            plot->setCursor(cursor, cursors_.at(static_cast<std::size_t>(cursor)));
}

void TrendStack::moveCursor(int columns)
{
    const std::optional<TrendTime>& at = cursors_.at(static_cast<std::size_t>(cursor_));
    if (at)
        setCursor(cursor_, *at + columns * window_.step);
}

void TrendStack::addNote(const TrendNote& note)
{
    const auto isOther = [](const TrendNote& each) { return !each.isOwn; };
    if (std::count_if(notes_.begin(), notes_.end(), isOther) >= maxNotes)
        notes_.erase(std::find_if(notes_.begin(), notes_.end(), isOther));
    notes_.push_back(note);
    showNotes();
}

void TrendStack::setOwnNotes(const std::vector<TrendNote>& notes)
{
    notes_.erase(std::remove_if(notes_.begin(), notes_.end(),
                                [](const TrendNote& each) { return each.isOwn; }),
                 notes_.end());
    notes_.insert(notes_.end(), notes.begin(), notes.end());
    showNotes();
}

void TrendStack::showNotes()
{
    for (TrendPlot* const plot : plots_)
        plot->setNotes(notes_);
    isChanged_ = true;
}

// ---- drawing ----------------------------------------------------------------------------------

void TrendStack::showEvent(QShowEvent* event)
{
    QScrollArea::showEvent(event);
    isChanged_ = true;
    timer_.start(); // to lay it out takes long enough, the curves come with the next picture
}

void TrendStack::hideEvent(QHideEvent* event)
{
    QScrollArea::hideEvent(event);
    timer_.stop();
}

bool TrendStack::draw()
{
    if (plots_.empty() || !isVisible() || isDrawing_)
        return true;
    const TrendTime now = toTrendTime(panelNow());
    if (drawn_ == 0) {
        const TrendWindow window = view_.window(plots_.front()->pixels(), now);
        const bool isMoved = window.from != window_.from || window.step != window_.step;
        const bool isDue = isNews_ && sinceDrawn_.isValid() && sinceDrawn_.hasExpired(newsPauseMs);
        if (!isMoved && !isChanged_ && !isDue)
            return true;
        window_ = window;
        isChanged_ = isNews_ = false;
        sinceDrawn_.start();
    }
    isDrawing_ = true; // as drawing tells of new sizes
    QElapsedTimer turn;
    turn.start();
    std::size_t budget = eventsPerTurn;
    while (drawn_ < plots_.size() && !turn.hasExpired(turnMs)) {
        if (!plots_.at(drawn_)->update(history_, window_, budget))
            break;
        ++drawn_;
    }
    isDrawing_ = false;
    if (drawn_ < plots_.size()) {
        // Else the next turn would not know that a picture was begun.
        isChanged_ = isChanged_ || drawn_ == 0;
        turnTimer_.start(0);
        return false;
    }
    drawn_ = 0;
    align();
    return true;
}

// So that a time is in one place in all of them.
void TrendStack::align()
{
    int left = 0;
    int right = 0;
    for (const TrendPlot* const plot : plots_) {
        left = std::max(left, plot->leftExtent());
        right = std::max(right, plot->rightExtent());
    }
    for (TrendPlot* const plot : plots_)
        plot->setExtents(left, right);
}

} // namespace dov417
