#include "protocol.h"

#include "protocol/register_table.h"
#include "shortcuts.h"

// Lists and texts start empty by themselves, and static storage is zero: what stands here is what
// hosts rely on beyond that.
Protocol::Protocol() : shortcuts(new Shortcuts)
{
    dataAreas.clear();
    burstCount = 0;
    commFailed = 0;
    spareWord = 0;
    currentVar.stationNo = 0;
    currentVar.address = 0;
    currentVar.length = 0;
    currentVar.regName = QString::fromLatin1("");
    recipeIndex = 0;
    for (int i = 0; i < registerTypeCount; ++i) {
        regNames.append(REG_LIST[i]);
    }
}

Protocol::~Protocol()
{
    delete shortcuts;
}

Protocol driver;
