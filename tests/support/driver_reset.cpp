#include "driver_reset.h"

#include "protocol.h"

void resetDriver()
{
    driver.callBackTag = 0;
    driver.writeToCacheOnly = 0;
    driver.propertyField3 = 0;
    driver.retryLimit = 0;
    driver.mergeGap = 0;
    driver.recipeVars.clear();
    driver.recipeRequests.clear();
    driver.groupStarts.clear();
    driver.currentVars.clear();
    driver.recipeIndex = 0;
    driver.propertyPage = QString();
    driver.lastConditionVar = VARIABLE();
    driver.currentVar = VARIABLE();
}
