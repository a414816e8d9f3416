#include "panel/frames/wire_view.h"

#include <algorithm>
#include <cmath>

#include "line/frame_bytes.h"
#include "panel/frames/wire_words.h"

namespace dov417 {

namespace {

constexpr Clock::duration shortest = std::chrono::seconds(1);

Clock::duration scaled(Clock::duration duration, double factor)
{
    return Clock::duration(std::llround(static_cast<double>(duration.count()) * factor));
}

double millisecondsBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

} // namespace

WireView::WireView(const WireTimes& times, const std::vector<Area>& areas)
    : times_(&times), areas_(areas)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAccessibleName(tr("Time on the wire, to scale"));
    measureTexts();
    setMinimumLanes();
}

void WireView::showTimes(const WireTimes& times, bool isRecording)
{
    times_ = &times;
    isRecording_ = isRecording;
    forget();
    if (!isRecording)
        return;
    fitCycles(); // as much of its beginning
    zero_ = times.begin();
    show(times.begin(), times.begin() + (to_ - from_));
}

void WireView::forget()
{
    from_ = to_ = zero_ = now_ = Clock::time_point();
    current_ = 0;
    lanes_ = 0;
    isFollowing_ = !isRecording_;
    removeRulers();
    setMinimumLanes();
    emit currentChanged();
    emit windowMoved();
    update();
}

void WireView::setStationNames(const StationNames& names)
{
    names_ = names;
    measureTexts();
    update();
}

QString WireView::laneName(int station) const
{
    return station == 0 ? tr("all stations") : stationText(names_, station);
}

// ---- places ---------------------------------------------------------------------------------

int WireView::laneHeight() const
{
    const int least = fontMetrics().height() + 2 * spaceAround;
    const int lanes = static_cast<int>(times_->stations().size()) + 1;
    return std::clamp((height() - top() - spaceAround) / lanes, least, 5 * least);
}

// Once, as each place of a picture is reckoned from them, and a text takes long to measure.
void WireView::measureTexts()
{
    int width = fontMetrics().horizontalAdvance(stationText({}, maxStation));
    for (const auto& [station, name] : names_)
        width = std::max(width, fontMetrics().horizontalAdvance(laneName(station)));
    left_ = width + 3 * spaceAround;
    // Half of the scale's last number stands there.
    right_ = fontMetrics().horizontalAdvance(QStringLiteral("0000 ms")) / 2;
}

// The scale, the cycles below it, and the rulers' flags below these.
int WireView::top() const
{
    return 4 * fontMetrics().height() + 3 * spaceAround;
}

double WireView::xOf(Clock::time_point time) const
{
    const double length = std::max(1e-9, millisecondsBetween(from_, to_));
    return left() + millisecondsBetween(from_, time) / length * (width() - left() - right());
}

Clock::time_point WireView::timeAt(double x) const
{
    const double share = (x - left()) / std::max(1, width() - left() - right());
    return from_ +
           Clock::duration(std::llround(share * static_cast<double>((to_ - from_).count())));
}

// Of names above the bars of a station.
int WireView::nameRows() const
{
    const int line = fontMetrics().height();
    return std::clamp((laneHeight() - 2 * spaceAround) / line - 1, 0, 2);
}

QRect WireView::lane(int lane) const
{
    return {left(), top() + lane * laneHeight(), width() - left() - right(), laneHeight()};
}

int WireView::laneOf(int station) const
{
    const auto& stations = times_->stations();
    return static_cast<int>(std::distance(stations.begin(), stations.find(station))) + 1;
}

void WireView::setMinimumLanes()
{
    lanes_ = times_->stations().size();
    const int least = fontMetrics().height() + 2 * spaceAround;
    setMinimumHeight(top() + (static_cast<int>(lanes_) + 1) * least + spaceAround);
}

QSize WireView::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 100, fontMetrics().height() * 16};
}

// ---- what is shown --------------------------------------------------------------------------

void WireView::refresh(Clock::time_point now)
{
    now_ = now;
    if (lanes_ != times_->stations().size())
        setMinimumLanes();
    if (isFollowing_)
        fitCycles();
    else
        update();
}

void WireView::setFollowing(bool isFollowing)
{
    isFollowing_ = isFollowing && !isRecording_;
    if (isFollowing)
        fitCycles();
    emit windowMoved();
}

void WireView::setCycles(int cycles)
{
    cycles_ = std::clamp(cycles, 1, maxCycles);
    const Clock::time_point from = from_;
    const Clock::time_point zero = zero_;
    fitCycles();
    if (!isRecording_)
        return;
    zero_ = zero;
    show(from, from + (to_ - from_)); // so long, from the same place
}

Clock::time_point WireView::latest() const
{
    return std::max(times_->end(), now_);
}

// A line on which no cycle comes to its end is shown as it goes on.
void WireView::fitCycles()
{
    const auto& cycles = times_->cycles();
    const std::size_t count = static_cast<std::size_t>(cycles_);
    Clock::time_point from = times_->begin();
    Clock::time_point to = latest();
    if (cycles.size() > count) {
        const Clock::duration length = cycles.back() - cycles[cycles.size() - 1 - count];
        const bool goesOn = isFollowing_ && to - cycles.back() > 2 * length;
        to = goesOn ? to : cycles.back();
        from = to - length;
    } else {
        from = std::max(from, to - shortest);
    }
    zero_ = from;
    show(from, to);
}

void WireView::fitAll()
{
    standStill();
    zero_ = times_->begin();
    show(times_->begin(), latest());
}

void WireView::standStill()
{
    isFollowing_ = false;
}

void WireView::show(Clock::time_point from, Clock::time_point to)
{
    const Clock::duration most =
        std::max<Clock::duration>(shortest, scaled(latest() - times_->begin(), 1.1));
    const Clock::duration length = std::clamp<Clock::duration>(to - from, minLength, most);
    from_ = from;
    to_ = from + length;
    emit windowMoved();
    update();
}

void WireView::zoomAt(double factor, Clock::time_point centre)
{
    standStill();
    const Clock::duration most =
        std::max<Clock::duration>(shortest, scaled(latest() - times_->begin(), 1.1));
    const Clock::duration before = to_ - from_;
    const Clock::duration length =
        std::clamp<Clock::duration>(scaled(before, 1 / factor), minLength, most);
    if (before.count() <= 0)
        return;
    const double share =
        static_cast<double>((centre - from_).count()) / static_cast<double>(before.count());
    const Clock::time_point from = centre - scaled(length, share);
    show(from, from + length);
}

void WireView::zoom(double factor)
{
    const WireFrame* const frame = times_->find(current_);
    const bool isSeen = frame && frame->begin >= from_ && frame->begin <= to_;
    zoomAt(factor, isSeen ? frame->begin : from_ + (to_ - from_) / 2);
}

void WireView::pan(double windows)
{
    standStill();
    const Clock::duration length = to_ - from_;
    const Clock::time_point lowest = times_->begin() - length / 2;
    const Clock::time_point highest = std::max(lowest, latest() - length / 2);
    const Clock::time_point from = std::clamp(from_ + scaled(length, windows), lowest, highest);
    show(from, from + length);
}

// ---- frames ---------------------------------------------------------------------------------

void WireView::setCurrent(long long number)
{
    if (number == current_)
        return;
    current_ = number;
    emit currentChanged();
    update();
}

void WireView::chooseNext(int step)
{
    const auto& frames = times_->frames();
    if (frames.empty())
        return;
    standStill();
    const int last = static_cast<int>(frames.size()) - 1;
    const WireFrame* const frame = times_->find(current_);
    // Without one, the first is the last that is seen.
    const int place =
        static_cast<int>(
            times_->placeAt(frame ? frame->begin : to_ - Clock::duration(1)).value_or(0)) +
        (frame ? step : 0);
    const WireFrame& next = frames[static_cast<std::size_t>(std::clamp(place, 0, last))];
    setCurrent(next.told.number);
    bringIntoView(next);
}

void WireView::bringIntoView(const WireFrame& frame)
{
    const Clock::duration length = to_ - from_;
    if (frame.begin < from_ || frame.end > to_) {
        const Clock::time_point from = frame.begin < from_ || frame.end - frame.begin > length
                                           ? frame.begin - length / 10
                                           : frame.end - length * 9 / 10;
        show(from, from + length);
        return;
    }
    emit windowMoved();
    update();
}

// On its own lane, or on the line's.
const WireFrame* WireView::frameAt(const QPoint& place) const
{
    if (place.x() < left() || place.y() < top())
        return nullptr;
    const Clock::time_point time = timeAt(place.x());
    const std::optional<std::size_t> at = times_->placeAt(timeAt(place.x() + 1));
    if (!at)
        return nullptr;
    const WireFrame& frame = times_->frames()[*at];
    const int row = (place.y() - top()) / laneHeight();
    const bool isItsLane = row == 0 || row == laneOf(frame.told.request.station);
    const Clock::time_point end = frame.hasEnded ? frame.end : latest();
    return isItsLane && time <= std::max(end, timeAt(xOf(frame.begin) + 2)) ? &frame : nullptr;
}

} // namespace dov417
