#include "panel/trends/trend_thinner.h"

#include <algorithm>
#include <cmath>

namespace dov417 {

void TrendThinner::choose(const Address& address, const TrendNumbers& numbers)
{
    if (address == address_ && numbers == numbers_)
        return;
    address_ = address;
    numbers_ = numbers;
    isBegun_ = false;
    line_ = TrendLine();
}

bool TrendThinner::update(const TrendHistory& history, const TrendWindow& window,
                          std::size_t& budget)
{
    moveTo(window);
    bool isDone = true;
    history.walk(address_, scanned_, [&](const TrendEvent& event) {
        if (event.at > window.to)
            return false;
        if (budget == 0) {
            isDone = false;
            return false;
        }
        --budget;
        if (event.at <= scanned_ && !columns_.empty())
            return true; // it was looked at before
        State state;
        state.value = event.isKnown ? numbers_(event.raw) : 0;
        state.isKnown = event.isKnown && !std::isnan(state.value);
        scanned_ = std::max(scanned_, event.at);
        if (event.at < from_)
            entering_ = state;
        else
            add(event.at, state);
        return true;
    });
    if (isDone)
        draw(std::min(window.to, history.end(address_).value_or(window.from)));
    return isDone;
}

// Keeps the columns that are in the window, or begins anew.
void TrendThinner::moveTo(const TrendWindow& window)
{
    const TrendTime from = window.from - window.from % window.step;
    if (!isBegun_ || window.step != window_.step || from < from_ || from > scanned_ ||
        window.to < window_.to) {
        isBegun_ = true;
        columns_.clear();
        entering_ = State();
        scanned_ = from_ = from;
    }
    window_ = window;
    const auto end = std::find_if(columns_.begin(), columns_.end(), [&](const Column& column) {
        return column.index * window.step >= from;
    });
    if (end != columns_.begin())
        entering_ = std::prev(end)->last;
    columns_.erase(columns_.begin(), end);
    from_ = from;
}

void TrendThinner::add(TrendTime at, const State& state)
{
    const TrendTime index = at / window_.step;
    if (columns_.empty() || columns_.back().index != index) {
        columns_.emplace_back();
        columns_.back().index = index;
        columns_.back().firstAt = at;
    }
    Column& column = columns_.back();
    column.lastAt = at;
    column.last = state;
    if (!state.isKnown) {
        ++column.gaps;
        return;
    }
    column.low = column.values == 0 ? state.value : std::min(column.low, state.value);
    column.high = column.values == 0 ? state.value : std::max(column.high, state.value);
    ++column.values;
}

void TrendThinner::begin(TrendTime at, double value)
{
    line_.begins.push_back(line_.points.size());
    line_.points.push_back({at, value});
}

void TrendThinner::draw(TrendTime end)
{
    line_.points.clear();
    line_.begins.clear();
    const bool isAtOnce = !columns_.empty() && columns_.front().firstAt == from_;
    State state = isAtOnce ? State() : entering_;
    if (state.isKnown && from_ < end)
        begin(from_, state.value);
    for (const Column& column : columns_)
        draw(column, state);
    if (state.isKnown && !line_.points.empty() && line_.points.back().at < end)
        line_.points.push_back({end, state.value});
}

// What held before it goes on to its first event.
void TrendThinner::draw(const Column& column, State& state)
{
    if (state.isKnown)
        line_.points.push_back({column.firstAt, state.value});
    const bool isOne = column.gaps == 0;
    if (column.values > 0) {
        if (!state.isKnown || !isOne)
            begin(column.firstAt, column.low);
        else
            line_.points.push_back({column.firstAt, column.low});
        if (column.values > 1)
            line_.points.push_back({column.firstAt, column.high});
        if (isOne && column.values > 1)
            line_.points.push_back({column.lastAt, column.last.value});
        else if (!isOne && column.last.isKnown)
            begin(column.lastAt, column.last.value);
    }
    state = column.last;
}

} // namespace dov417
