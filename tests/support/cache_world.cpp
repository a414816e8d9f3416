#include "cache_world.h"
#include "cache/data_areas.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <sstream>

#include "cache/change_notifiers.h"
#include "uncalled_functions.h"

namespace {

void fill(unsigned char (&bytes)[4], const char* hexText)
{
    const QByteArray source = hex(hexText);
    std::memcpy(bytes, source.constData(), std::min(sizeof bytes, size_t(source.size())));
}

std::vector<unsigned char> exactly(const char* hexText)
{
    const QByteArray source = hex(hexText);
    return std::vector<unsigned char>(source.begin(), source.end());
}

} // namespace

RegisterType registerRow(const char* regName, const char* dataBits, const char* unitBits,
                         const char* timerCounter)
{
    const QString row[rangeFieldCount] = {name("DDD"),       name("0"),  name("127"),
                                          name(dataBits),    name("RW"), name(unitBits),
                                          name(timerCounter)};
    return deriveRegisterType(name(regName), row, 3, 0);
}

int CacheTest::put(const char* area, int address, const char* device, int station)
{
    _DATA_ record = _DATA_();
    record.station = station;
    record.area = name(area);
    record.address = address;
    fill(record.deviceValue, device);
    driver.dataAreas.append(record);
    return static_cast<int>(driver.dataAreas.size()) - 1;
}

int CacheTest::putPending(const char* area, int address, const char* device, const char* pending,
                          int station)
{
    const int index = put(area, address, device, station);
    fill(driver.dataAreas[index].pendingValue, pending);
    driver.dataAreas[index].writePending = 1;
    return index;
}

void CacheTest::watch(const char* area, int address, int viewFlags, unsigned int bitMonitor)
{
    const int index = unitIndex(1, area, address);
    ASSERT_GE(index, 0) << "no unit " << area << ' ' << address;
    driver.dataAreas[index].viewFlags = viewFlags;
    driver.dataAreas[index].bitMonitor = bitMonitor;
}

void CacheTest::watchAll(int viewFlags, unsigned int bitMonitor)
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        driver.dataAreas[i].viewFlags = viewFlags;
        driver.dataAreas[i].bitMonitor = bitMonitor;
    }
}

std::string CacheTest::device(const char* area, int address)
{
    return toHex(unit(1, area, address).deviceValue, 4);
}

std::string CacheTest::pending(const char* area, int address)
{
    return toHex(unit(1, area, address).pendingValue, 4);
}

bool CacheTest::isPending(const char* area, int address)
{
    return unit(1, area, address).writePending == 1;
}

unsigned int CacheTest::pendingBits(const char* area, int address)
{
    return unit(1, area, address).pendingBits;
}

std::vector<std::string> CacheTest::units()
{
    std::vector<std::string> all;
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& record = driver.dataAreas.at(i);
        all.push_back(std::to_string(record.station) + '/' + text(record.area) + ' ' +
                      std::to_string(record.address));
    }
    return all;
}

std::vector<std::string> CacheTest::marks()
{
    std::vector<std::string> all;
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& record = driver.dataAreas.at(i);
        std::ostringstream out;
        out << text(record.area) << record.address;
        if (record.viewFlags != 0) {
            out << " views " << record.viewFlags;
        }
        if (record.bitMonitor != 0) {
            out << " bits " << std::uppercase << std::hex << std::setw(4) << std::setfill('0')
                << record.bitMonitor;
        }
        all.push_back(out.str());
    }
    return all;
}

std::vector<std::string> CacheTest::written()
{
    std::vector<std::string> all;
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& record = driver.dataAreas.at(i);
        if (record.writePending == 1) {
            all.push_back(text(record.area) + std::to_string(record.address) + ' ' +
                          toHex(record.pendingValue, 4));
        }
    }
    return all;
}

std::vector<std::string> CacheTest::queue()
{
    return summary(driver.writeList);
}

std::string CacheTest::queuedData(int index, int count)
{
    if (index >= driver.writeList.size()) {
        ADD_FAILURE() << "no queued write " << index;
        return "";
    }
    return toHex(driver.writeList.at(index).data, count);
}

void CacheTest::store(const RegisterType& type, int address, int length, const char* bytes,
                      int station)
{
    const std::vector<unsigned char> data = exactly(bytes);
    storeWrite(type, station, type.name, address, length, data.data());
}

std::string CacheTest::readRow(const RegisterType& type, int address, int length, int station)
{
    std::vector<unsigned char> out(256, 0xEE);
    readUnits(type, station, address, length, out.data());
    while (!out.empty() && out.back() == 0xEE) {
        out.pop_back();
    }
    return toHex(out.data(), static_cast<int>(out.size()));
}

void CacheTest::settle(const RegisterType& type, int address, int length, bool accepted,
                       int station)
{
    settleWrite(type, station, type.name, address, length, accepted);
}

void CacheTest::save(const char* regName, int address, int length, const char* bytes, int station)
{
    std::vector<unsigned char> data = exactly(bytes);
    write_saveDataToArea(station, name(regName), address, length, data.data());
}

void CacheTest::settleNamed(const char* regName, int address, int length, int result, int station)
{
    _write_FailOrSuc(station, name(regName), address, length, result);
}

void NotifierTest::word(int oldValue, int newValue, int timerCounter)
{
    _wordDataChange(&oldValue, &newValue, 0, timerCounter);
}

void NotifierTest::dword(int oldValue, int newValue, int timerCounter)
{
    _dwordDataChange(&oldValue, &newValue, 0, timerCounter);
}

void NotifierTest::byte(unsigned char oldValue, unsigned char newValue, int timerCounter)
{
    _byteDataChange(&oldValue, &newValue, 0, timerCounter);
}

void NotifierTest::unitWatched(int address, int viewFlags, unsigned int bitMonitor)
{
    driver.dataAreas.clear();
    put("X", address, "");
    watch("X", address, viewFlags, bitMonitor);
}
