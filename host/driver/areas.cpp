#include "driver/areas.h"

#include "driver/registers.h"

namespace dov417 {

namespace {

const int bitsPerWord = 16;
const int readCoils = 1;

int number(unsigned char high, unsigned char low)
{
    return high * 256 + low;
}

std::string range(const std::string& name, const std::string& first, const std::string& last)
{
    return name + ":" + first + (first == last ? std::string() : ".." + last);
}

std::string bitNumber(int bit)
{
    return std::to_string(bit / bitsPerWord) + "." + std::to_string(bit % bitsPerWord);
}

} // namespace

std::vector<Area> learnAreas(const Library& library)
{
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

std::string areaText(const std::vector<Area>& areas, bool coils, int first, int count)
{
    for (const Area& area : areas) {
        const int units = coils ? area.words * bitsPerWord : area.words;
        const int from = first - area.base;
        const int last = from + count - 1;
        if (area.coils != coils || from < 0 || count < 1 || last >= units)
            continue;
        if (!coils)
            return range(area.regName, std::to_string(from), std::to_string(last));
        if (from % bitsPerWord == 0 && count % bitsPerWord == 0)
            return range(area.regName, std::to_string(from / bitsPerWord),
                         std::to_string(last / bitsPerWord));
        return range(areaOf(area.regName) + "_bit", bitNumber(from), bitNumber(last));
    }
    return std::string();
}

} // namespace dov417
