// Prints what a host relies on by bytes: signatures of the exported functions, layouts of the
// records and of the driver's members. tests/abi/compare.cmake compares it with what is recorded.
#include <QByteArray>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string>
#include <typeinfo>

#include "intf.h"

namespace {

std::string plainName(const std::type_info& type)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : type.name();
}

void printFunction(const char* name, const std::type_info& signature)
{
    std::printf("function %s: %s\n", name, plainName(signature).c_str());
}

void printRecord(const char* name, std::size_t size)
{
    std::printf("record %s: %zu bytes\n", name, size);
}

void printField(const char* name, std::size_t offset, std::size_t size, const std::type_info& type)
{
    std::printf("  at %zu, %zu bytes: %s %s\n", offset, size, plainName(type).c_str(), name);
}

template <typename Record, typename Field>
std::size_t offsetIn(const Record& record, const Field& field)
{
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&field) -
                                    reinterpret_cast<const char*>(&record));
}

} // namespace

#define FUNCTION(name) printFunction(#name, typeid(decltype(name)))
#define RECORD(type) printRecord(#type, sizeof(type))
#define FIELD(object, name)                                                                        \
    printField(#name, offsetIn(object, (object).name), sizeof((object).name),                      \
               typeid(decltype((object).name)))

int main()
{
    FUNCTION(intf_getVersion);
    FUNCTION(intf_getProtocolType);
    FUNCTION(intf_getDriverParameter);
    FUNCTION(intf_getDriverPropertyPage);
    FUNCTION(intf_SetDriverPropertyPage);
    FUNCTION(intf_setAddrValueChangeCallBack);
    FUNCTION(intf_initProperty);
    FUNCTION(intf_checkAddrValidity);
    FUNCTION(intf_checkAddr);
    FUNCTION(intf_getRegListByType);
    FUNCTION(intf_getRegDiscription);
    FUNCTION(intf_multiCopy);
    FUNCTION(intf_addrMerge);
    FUNCTION(intf_addConditionRead);
    FUNCTION(intf_setRcpAddress);
    FUNCTION(intf_getSendFrame);
    FUNCTION(intf_dealRcvFrame);
    FUNCTION(intf_getData);
    FUNCTION(intf_setData);

    RECORD(KEY_ADDRESS);
    const KEY_ADDRESS key = KEY_ADDRESS();
    FIELD(key, tag);
    FIELD(key, hostValue);
    FIELD(key, userIndex);
    FIELD(key, stationNo);
    FIELD(key, regName);
    FIELD(key, extText);
    FIELD(key, address);
    FIELD(key, bitFlag);
    FIELD(key, length);
    FIELD(key, data);

    RECORD(VARIABLE);
    const VARIABLE request = VARIABLE();
    FIELD(request, kind);
    FIELD(request, stationNo);
    FIELD(request, regName);
    FIELD(request, address);
    FIELD(request, length);
    FIELD(request, data);

    RECORD(_RCP_VAR_PRO);
    const _RCP_VAR_PRO recipe = _RCP_VAR_PRO();
    FIELD(recipe, linkId);
    FIELD(recipe, stationNo);
    FIELD(recipe, regName);
    FIELD(recipe, address);
    FIELD(recipe, length);
    FIELD(recipe, bufOffset);
    FIELD(recipe, reserved);

    RECORD(FRAME_PRO);
    const FRAME_PRO frame = FRAME_PRO();
    FIELD(frame, frame);
    FIELD(frame, sendLength);
    FIELD(frame, replyLength);
    FIELD(frame, dataPosition);
    FIELD(frame, dataCount);
    FIELD(frame, spare);
    FIELD(frame, request);

    RECORD(_DATA_);
    const _DATA_ unit = _DATA_();
    FIELD(unit, spareFlag);
    FIELD(unit, writePending);
    FIELD(unit, pendingBits);
    FIELD(unit, viewFlags);
    FIELD(unit, bitMonitor);
    FIELD(unit, station);
    FIELD(unit, area);
    FIELD(unit, address);
    FIELD(unit, deviceValue);
    FIELD(unit, pendingValue);

    RECORD(Protocol);
    FIELD(driver, valueChangeCallBack);
    FIELD(driver, callBackTag);
    FIELD(driver, writeToCacheOnly);
    FIELD(driver, propertyField3);
    FIELD(driver, retryLimit);
    FIELD(driver, mergeGap);
    FIELD(driver, hostBlock);
    FIELD(driver, hostArg2);
    FIELD(driver, recipeBuffer);
    FIELD(driver, hostMutex);
    FIELD(driver, readList);
    FIELD(driver, writeList);
    FIELD(driver, conditionList);
    FIELD(driver, dataAreas);
    FIELD(driver, recipeVars);
    FIELD(driver, recipeRequests);
    FIELD(driver, groupStarts);
    FIELD(driver, lastConditionVar);
    FIELD(driver, regNames);
    FIELD(driver, currentVar);
    FIELD(driver, currentVars);
    FIELD(driver, sendKind);
    FIELD(driver, burstCount);
    FIELD(driver, handshakeRequest);
    FIELD(driver, retryCount);
    FIELD(driver, pieceBitLimit);
    FIELD(driver, pieceWordLimit);
    FIELD(driver, commFailed);
    FIELD(driver, frameIndex);
    FIELD(driver, initDone);
    FIELD(driver, sendList);
    FIELD(driver, mutex);
    FIELD(driver, recipeIndex);
    FIELD(driver, propertyPage);
    FIELD(driver, spareList);
    FIELD(driver, frameVarCount);
    FIELD(driver, spareWord);
    return 0;
}
