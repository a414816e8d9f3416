#include "panel/trends/trend_recorder.h"

#include <algorithm>

#include "panel/desk/panel_clock.h"

namespace dov417 {

TrendRecorder::TrendRecorder(PanelDesk& desk, TrendHistory& history)
    : desk_(desk), history_(history)
{
    connect(&desk, &PanelDesk::valuesCame, this,
            [this](const std::vector<View>& views, Clock::time_point then) {
                record(views, toTrendTime(then));
            });
    connect(&desk, &PanelDesk::repliesDoubted, this,
            [this](Clock::time_point then) { doubt(toTrendTime(then)); });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { look(); });
    connect(&desk, &PanelDesk::projectBegan, this, [this]() {
        history_.clear();
        isKnown_ = false;
    });
    connect(&desk, &PanelDesk::lineBegan, this, [this]() {
        history_.interrupt(TrendGap::otherLine, toTrendTime(panelNow()));
        if (!history_.addresses().empty())
            emit otherLine();
    });
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() {
        for (const Address& address : history_.addresses())
            if (!desk_.book().isWatched(address))
                history_.interrupt(address, TrendGap::notWatched, toTrendTime(panelNow()));
    });
}

void TrendRecorder::record(const std::vector<View>& views, TrendTime told)
{
    for (const View& view : views)
        history_.record(view, told);
    isKnown_ = true;
    look();
}

void TrendRecorder::doubt(TrendTime told)
{
    const std::vector<Address> all = history_.addresses();
    const bool wasKnown = std::any_of(
        all.begin(), all.end(), [this](const Address& each) { return history_.isKnown(each); });
    history_.interrupt(TrendGap::doubtful, told);
    if (wasKnown)
        emit doubted();
}

// The desk tells it of each batch; what is no news costs nothing.
void TrendRecorder::look()
{
    const bool isHanging = desk_.book().isSilent();
    if (!isKnown_ || (!isHanging && desk_.state().phase == LinePhase::open))
        return;
    history_.interrupt(isHanging ? TrendGap::lineHung : TrendGap::lineGone,
                       toTrendTime(panelNow()));
    isKnown_ = false;
}

} // namespace dov417
