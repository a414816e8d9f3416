#include "driver/areas.h"

#include "driver/registers.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

int number(unsigned char high, unsigned char low)
{
    return high * 256 + low;
}

} // namespace

std::vector<Area> learnAreas(const Library& library)
{
    const DriverClaim claim(library);
    std::vector<Area> areas;
    for (const RegisterType& type : registerTypes(library)) {
        if (type.width != Width::word)
            continue;
        int result = 0;
        library.intf_setAddrValueChangeCallBack(nullptr);
        library.intf_initProperty(nullptr, 0, nullptr, &result, "0#0#0#1#1", nullptr);
        KEY_ADDRESS key = KEY_ADDRESS();
        key.stationNo = 1;
        key.regName = QString::fromStdString(type.name);
        key.length = 1;
        QList<KEY_ADDRESS> keys;
        keys.append(key);
        FRAME_PRO frame = FRAME_PRO();
        library.intf_addrMerge(keys);
        if (library.intf_getSendFrame(&frame) != 1 || frame.sendLength < 6)
            continue;
        Area area;
        area.regName = type.name;
        area.coils = frame.frame[1] == readCoils;
        area.base = number(frame.frame[2], frame.frame[3]);
        area.words = QString::fromStdString(type.highest).toInt() + 1;
        areas.push_back(area);
    }
    int result = 0;
    library.intf_initProperty(nullptr, 0, nullptr, &result, "0#0#0#1#1", nullptr);
    return areas;
}

} // namespace dov417
