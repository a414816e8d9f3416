#include "panel/trends/trend_recorder.h"

#include "panel/desk/panel_clock.h"

namespace dov417 {

TrendRecorder::TrendRecorder(PanelDesk& desk, TrendHistory& history)
    : desk_(desk), history_(history)
{
    connect(&desk, &PanelDesk::valuesCame, this,
            [this](const std::vector<View>& views, Clock::time_point then) {
                record(views, toTrendTime(then));
            });
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
    bool isDoubt = false;
    for (const View& view : views) {
        isDoubt = isDoubt || (isInDoubt(view) && history_.isKnown(view.address));
        history_.record(view, told);
    }
    isKnown_ = true;
    look();
    if (isDoubt)
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
