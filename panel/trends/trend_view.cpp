#include "panel/trends/trend_view.h"

#include <algorithm>

#include "panel/trends/trend_arrangement.h"

namespace dov417 {

namespace {

constexpr std::size_t maxPlaces = 100;

TrendTime allowedSpan(double span)
{
    constexpr auto least = static_cast<double>(TrendArrangement::minSpan * trendSecond);
    constexpr auto most = static_cast<double>(TrendArrangement::maxSpan * trendSecond);
    return static_cast<TrendTime>(std::clamp(span, least, most));
}

} // namespace

TrendWindow TrendView::window(double pixels, TrendTime now)
{
    const auto step =
        std::max<TrendTime>(1, static_cast<TrendTime>(static_cast<double>(span_) / pixels));
    if (isRunning_)
        to_ = (now / step + 1) * step;
    return {from(), to_, step};
}

void TrendView::run()
{
    isRunning_ = true;
    before_.clear();
}

void TrendView::standStill()
{
    isRunning_ = false;
}

void TrendView::remember()
{
    if (before_.size() >= maxPlaces)
        before_.erase(before_.begin());
    before_.push_back({isRunning_, to_, span_});
}

void TrendView::setSpan(TrendTime span)
{
    remember();
    const TrendTime centre = middle();
    span_ = allowedSpan(static_cast<double>(span));
    if (!isRunning_)
        to_ = centre + span_ / 2;
}

void TrendView::zoom(double factor, TrendTime around)
{
    remember();
    const TrendTime before = span_;
    span_ = allowedSpan(static_cast<double>(span_) * factor);
    if (!isRunning_)
        to_ = around +
              static_cast<TrendTime>(static_cast<double>(to_ - around) *
                                     static_cast<double>(span_) / static_cast<double>(before));
}

void TrendView::move(double part)
{
    isRunning_ = false;
    to_ += static_cast<TrendTime>(part * static_cast<double>(span_));
}

void TrendView::choose(TrendTime from, TrendTime to)
{
    remember();
    isRunning_ = false;
    span_ = allowedSpan(static_cast<double>(to - from));
    to_ = to;
}

void TrendView::back()
{
    if (before_.empty())
        return;
    isRunning_ = before_.back().isRunning;
    to_ = before_.back().to;
    span_ = before_.back().span;
    before_.pop_back();
}

} // namespace dov417
