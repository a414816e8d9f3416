#include "link/send_scheduling.h"

#include <QMutexLocker>

#include "cache/change_notifiers.h"
#include "intf.h"
#include "planning/recipes.h"
#include "planning/request_queue.h"
#include "protocol.h"
#include "protocol/frame_building.h"
#include "protocol/record_copy.h"

namespace {

// ---- the host's two recipe request flags, under the host's mutex ------------------------------

struct RecipeFlags {
    bool download;
    bool upload;
};

RecipeFlags readRecipeFlags()
{
    RecipeFlags flags = {false, false};
    if (driver.hostBlock != 0) {
        QMutexLocker lock(driver.hostMutex);
        flags.download = driver.hostBlock[downloadFlagOffset] == 1;
        flags.upload = driver.hostBlock[uploadFlagOffset] == 1;
    }
    return flags;
}

void clearRecipeFlag(int offset)
{
    if (driver.hostBlock != 0) {
        QMutexLocker lock(driver.hostMutex);
        driver.hostBlock[offset] = 0;
    }
}

// ---- framing the current request --------------------------------------------------------------

void frameCurrentWrite()
{
    driver.frameVarCount = 1;
    getWriteFrame(driver.currentVar);
}

int frameCurrentRead()
{
    if (driver.currentVars.size() == 1) {
        assignRequest(driver.currentVars[0], driver.currentVar); // the list and its node stay
    } else {
        driver.currentVars.clear();
        driver.currentVars.append(driver.currentVar);
    }
    return getReadFrame(driver.currentVars);
}

void frameCyclicRead()
{
    driver.frameVarCount = 1;
    frameCurrentRead();
}

void frameSingleRead()
{
    driver.frameVarCount = frameCurrentRead();
}

bool recipeIsLeft()
{
    return driver.recipeIndex >= 0 && driver.recipeIndex < driver.recipeRequests.size();
}

// A recipe flag is set and no recipe request is left: the request before it is made again.
void frameAgain()
{
    switch (driver.sendKind) {
    case sendHandshake:
        handShakeFrame();
        return;
    case sendWrite:
    case sendRecipeDownload:
        frameCurrentWrite();
        return;
    case sendConditionRead:
    case sendRecipeUpload:
        frameSingleRead();
        return;
    case sendCyclicRead:
        frameCyclicRead();
        return;
    case sendIdle:
        return;
    }
}

void frameDownload()
{
    if (!recipeIsLeft()) {
        frameAgain();
        return;
    }
    const _RCP_VAR_PRO& next = driver.recipeRequests.at(driver.recipeIndex);
    if (!recipeValuesAreThere(next)) {
        return; // nothing goes out until the host clears its flag
    }
    rcpAddrToVar(next, driver.currentVar, 1);
    driver.sendKind = sendRecipeDownload;
    frameCurrentWrite();
}

void frameUpload()
{
    if (!recipeIsLeft()) {
        frameAgain();
        return;
    }
    rcpAddrToVar(driver.recipeRequests.at(driver.recipeIndex), driver.currentVar, 0);
    driver.sendKind = sendRecipeUpload;
    frameSingleRead();
}

// ---- the priorities ---------------------------------------------------------------------------

void frameNextRequest()
{
    const RecipeFlags flags = readRecipeFlags();
    if (driver.handshakeRequest != 0) {
        driver.sendKind = sendHandshake;
        handShakeFrame();
    } else if (flags.download) {
        frameDownload();
    } else if (flags.upload) {
        frameUpload();
    } else if (!driver.writeList.isEmpty() && driver.burstCount < maxWriteBurst) {
        assignRequest(driver.currentVar, driver.writeList.at(0));
        driver.sendKind = sendWrite;
        ++driver.burstCount;
        frameCurrentWrite();
    } else if (!driver.conditionList.isEmpty() && driver.burstCount < maxConditionBurst) {
        assignRequest(driver.currentVar, driver.conditionList.at(0));
        ++driver.burstCount;
        driver.sendKind = sendConditionRead;
        frameSingleRead();
    } else if (!driver.readList.isEmpty()) {
        assignRequest(driver.currentVar, driver.readList.at(0));
        driver.sendKind = sendCyclicRead;
        driver.burstCount = 0;
        frameCyclicRead();
    } else {
        driver.burstCount = 0;
        driver.sendKind = sendIdle;
    }
}

// ---- what a finished request leaves behind ----------------------------------------------------

void finishWrite()
{
    if (!driver.writeList.isEmpty()) {
        QMutexLocker lock(&driver.mutex);
        driver.writeList.removeFirst();
    }
}

void finishConditionRead()
{
    if (!driver.conditionList.isEmpty() &&
        sameTarget(driver.conditionList.at(0), driver.lastConditionVar) &&
        !callHost(-1, -1, QString::fromLatin1("-1"), driver.commFailed != 0 ? -1 : 0)) {
        return;
    }
    if (driver.commFailed != 0) {
        driver.conditionList.clear();
    } else if (!driver.conditionList.isEmpty()) {
        driver.conditionList.removeFirst();
    }
}

void finishCyclicRead()
{
    if (driver.readList.size() >= 2) {
        driver.readList.move(0, driver.readList.size() - 1);
    }
}

void finishRecipeRequest(int flagOffset)
{
    if (driver.commFailed == 0) {
        ++driver.recipeIndex;
        if (recipeIsLeft()) {
            return;
        }
    }
    driver.recipeIndex = 0;
    clearRecipeFlag(flagOffset);
}

} // namespace

int intf_getSendFrame(FRAME_PRO* frame)
{
    if (driver.sendList.isEmpty()) {
        frameNextRequest();
    }
    if (driver.sendList.isEmpty()) {
        return 0;
    }
    if (frame != 0) {
        assignFrame(*frame, driver.sendList.at(0));
    }
    return 1;
}

int getReadFrame(QList<VARIABLE> list)
{
    return list.isEmpty() ? 0 : frameRead(list.at(0), driver.sendList);
}

void getWriteFrame(VARIABLE& request)
{
    frameWrite(request, driver.sendList);
}

void handShakeFrame()
{
    frameHandshake(driver.sendList);
}

void dealListWhenFinish()
{
    switch (driver.sendKind) {
    case sendWrite:
        finishWrite();
        return;
    case sendConditionRead:
        finishConditionRead();
        return;
    case sendCyclicRead:
        finishCyclicRead();
        return;
    case sendRecipeDownload:
        finishRecipeRequest(downloadFlagOffset);
        return;
    case sendRecipeUpload:
        finishRecipeRequest(uploadFlagOffset);
        return;
    case sendIdle:
    case sendHandshake:
        return;
    }
}
