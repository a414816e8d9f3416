#include "link/send_scheduling.h"

#include "cache/change_notifiers.h"
#include "cache/write_queue.h"
#include "driver_lock.h"
#include "intf.h"
#include "planning/recipes.h"
#include "planning/request_queue.h"
#include "protocol.h"
#include "protocol/frame_building.h"
#include "protocol/record_copy.h"
#include "shortcuts.h"

namespace {

// ---- the host's two recipe request flags, under the host's mutex ------------------------------

struct RecipeFlags {
    bool download;
    bool upload;
};

RecipeFlags readRecipeFlags()
{
    RecipeFlags flags = {false, false};
    while (driver.hostBlock != 0) {
        const SharedMutex shared(driver.hostMutex);
        if (shared.stillMeant()) { // else there is another block now, and another mutex
            flags.download = driver.hostBlock[downloadFlagOffset] == 1;
            flags.upload = driver.hostBlock[uploadFlagOffset] == 1;
            break;
        }
    }
    return flags;
}

void clearRecipeFlag(int offset)
{
    if (driver.hostBlock != 0) {
        const Unfinished end(Unfinished::endOfRequest);
        const SharedMutex shared(driver.hostMutex);
        if (shared.stillMeant()) {
            driver.hostBlock[offset] = 0;
        }
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
    const bool valuesAreThere =
        driver.sendKind == sendCyclicRead && driver.shortcuts->valuesAreZero;
    if (driver.currentVars.size() == 1) { // the list and its node stay
        if (valuesAreThere) {
            assignTarget(driver.currentVars[0], driver.currentVar);
        } else {
            assignRequest(driver.currentVars[0], driver.currentVar);
        }
    } else {
        driver.currentVars.clear();
        driver.currentVars.append(driver.currentVar);
    }
    return frameRead(driver.currentVars.at(0), driver.sendList, valuesAreThere);
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

// ---- what a finished request leaves behind ----------------------------------------------------

bool recipeIsLeft()
{
    return driver.recipeIndex >= 0 && driver.recipeIndex < driver.recipeRequests.size();
}

void finishConditionRead()
{
    const Unfinished end(Unfinished::endOfRequest);
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

void finishRecipeRequest()
{
    if (driver.commFailed == 0) {
        ++driver.recipeIndex;
        if (recipeIsLeft()) {
            return;
        }
    }
    driver.recipeIndex = 0;
    clearRecipeFlag(currentSendKind().recipeFlag);
}

void nothing() {}

// clang-format off
const SendKindRow sendKinds[] = {
    // frame             finish               flag                settles patches fills
    {nothing,            nothing,             0,                  false,  false,  false}, // idle
    {handShakeFrame,     nothing,             0,                  false,  false,  false}, // handshake
    {frameCurrentWrite,  dropHeadWrite,       0,                  true,   true,   false}, // write
    {frameSingleRead,    finishConditionRead, 0,                  false,  false,  false}, // condition
    {frameCyclicRead,    finishCyclicRead,    0,                  false,  false,  false}, // cyclic
    {frameCurrentWrite,  finishRecipeRequest, downloadFlagOffset, false,  true,   false}, // download
    {frameSingleRead,    finishRecipeRequest, uploadFlagOffset,   false,  false,  true},  // upload
};
// clang-format on

// ---- the priorities ---------------------------------------------------------------------------

// The frame answered last goes back into the empty list: nothing is allocated for one after the
// other.
void frameCurrent()
{
    QList<FRAME_PRO>& spare = driver.shortcuts->spareFrames;
    if (!spare.isEmpty() && driver.sendList.isEmpty()) {
        reserveFrame(spare[0]);
        driver.sendList.swap(spare);
    }
    currentSendKind().frame();
    if (isReserved(driver.sendList)) {
        driver.sendList.swap(spare); // refused
    }
    driver.shortcuts->valuesAreZero =
        driver.sendKind == sendCyclicRead && !driver.sendList.isEmpty();
}

void takeNextCyclicRead()
{
    const VARIABLE& next = driver.readList.at(0);
    if (driver.shortcuts->valuesAreZero) {
        assignTarget(driver.currentVar, next);
    } else {
        assignRequest(driver.currentVar, next);
    }
}

void frameAs(SendKind kind)
{
    driver.sendKind = kind;
    frameCurrent();
}

void frameRecipe(SendKind kind, int withData)
{
    if (!recipeIsLeft()) {
        frameCurrent(); // the request before it is made again
        return;
    }
    const _RCP_VAR_PRO& next = driver.recipeRequests.at(driver.recipeIndex);
    if (withData != 0 && !recipeValuesAreThere(next)) {
        return; // nothing goes out until the host clears its flag
    }
    rcpAddrToVar(next, driver.currentVar, withData);
    frameAs(kind);
}

void frameNextRequest()
{
    const RecipeFlags flags = readRecipeFlags();
    if (!driver.sendList.isEmpty() || Unfinished::onOtherThread(Unfinished::endOfRequest)) {
        return; // by a thread that polled, or handed a reply in, while this one waited
    }
    if (driver.handshakeRequest != 0) {
        frameAs(sendHandshake);
    } else if (flags.download) {
        frameRecipe(sendRecipeDownload, 1);
    } else if (flags.upload) {
        frameRecipe(sendRecipeUpload, 0);
    } else if (!driver.writeList.isEmpty() && driver.burstCount < maxWriteBurst &&
               !Unfinished::onOtherThread(Unfinished::writing)) {
        assignRequest(driver.currentVar, driver.writeList.at(0));
        ++driver.burstCount;
        frameAs(sendWrite);
    } else if (!driver.conditionList.isEmpty() && driver.burstCount < maxConditionBurst) {
        assignRequest(driver.currentVar, driver.conditionList.at(0));
        ++driver.burstCount;
        frameAs(sendConditionRead);
    } else if (!driver.readList.isEmpty()) {
        takeNextCyclicRead();
        driver.burstCount = 0;
        frameAs(sendCyclicRead);
    } else {
        driver.burstCount = 0;
        driver.sendKind = sendIdle;
    }
}

} // namespace

const SendKindRow& currentSendKind()
{
    const int kind = driver.sendKind;
    return sendKinds[kind >= sendIdle && kind <= sendRecipeUpload ? kind : sendIdle];
}

int intf_getSendFrame(FRAME_PRO* frame)
{
    const DriverCall call;
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

void getWriteFrame(VARIABLE& request)
{
    frameWrite(request, driver.sendList);
}

void handShakeFrame()
{
    frameHandshake(driver.sendList);
}

void takeHeadFrame()
{
    QList<FRAME_PRO>& frames = driver.sendList;
    QList<FRAME_PRO>& spare = driver.shortcuts->spareFrames;
    if (frames.size() == 1 && spare.isEmpty()) {
        frames.swap(spare);
    } else if (!frames.isEmpty()) {
        frames.removeFirst();
    }
}

void dealListWhenFinish()
{
    currentSendKind().finish();
}
