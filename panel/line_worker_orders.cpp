// What the window orders of a line besides single writes.
#include "panel/line_worker.h"

namespace dov417 {

// Nothing that was meant for one controller may go out to another.
std::string LineWorker::refusal(int line, bool isWriting) const
{
    if (line != line_)
        return "another line was opened meanwhile";
    if (isWriting && !state_.isUnlocked)
        return "writing is locked on this line";
    return session_ ? std::string() : "the line is closed";
}

void LineWorker::moveRecipe(const RecipeOrder& order)
{
    const std::string why = refusal(order.line, order.kind == RecipeKind::download);
    if (why.empty())
        recipes_.start(*session_, order);
    else
        recipes_.refuse(order, why);
}

void LineWorker::setGap(int line, int gap)
{
    if (!refusal(line, false).empty())
        return; // the next line is opened with settings of its own
    SessionSettings settings = session_->settings();
    settings.gap = gap;
    session_->setSettings(settings);
    cycleBegan_ = Clock::now();
}

} // namespace dov417
