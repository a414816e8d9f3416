// What the desk asks of a line besides single writes.
#include "panel/desk/panel_desk.h"

namespace dov417 {

void PanelDesk::setStationNames(const StationNames& names)
{
    if (names == stationNames_)
        return;
    stationNames_ = names;
    emit stationNamesChanged();
}

void PanelDesk::setLineSetup(const LineSetup& setup)
{
    setup_ = setup;
    emit lineSetupChanged();
}

void PanelDesk::setGap(int gap)
{
    if (writesUnderWay() > 0 || recipeIsUnderWay())
        throw UsageFailure(
            tr("values are being written or read; planning anew would break that off. "
               "Wait until it has ended")
                .toStdString());
    setup_.gap = gap;
    line_.setGap(gap);
    emit lineSetupChanged();
}

long long PanelDesk::moveRecipe(int line, RecipeKind kind, const std::vector<RecipeEntry>& entries)
{
    if (!hasLine())
        throw UsageFailure(tr("no line is open").toStdString());
    requireHearing();
    if (line != lineNumber())
        throw UsageFailure(tr("another line was opened meanwhile").toStdString());
    if (recipeIsUnderWay())
        throw UsageFailure(tr("another recipe is under way").toStdString());
    if (writesUnderWay() > 0)
        throw UsageFailure(tr("values are being written; wait until that has ended").toStdString());
    if (kind == RecipeKind::download)
        requireWriting();
    recipe_ = line_.moveRecipe(line, kind, entries);
    if (kind == RecipeKind::download)
        for (const RecipeEntry& entry : entries)
            recipeValues_ += static_cast<std::size_t>(valueCount(entry.item.address));
    return recipe_;
}

void PanelDesk::cancelRecipe()
{
    if (recipe_ != 0)
        line_.cancelRecipe(recipe_);
}

void PanelDesk::hearOfRecipe(const RecipeNews& news)
{
    if (news.number == recipe_ && news.hasEnded) {
        recipe_ = 0;
        recipeValues_ = 0;
    }
    emit recipeTold(news);
}

} // namespace dov417
