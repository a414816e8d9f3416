#include "line/areas.h"

#include "line/frame_bytes.h"

namespace dov417 {

namespace {

std::string range(const std::string& name, const std::string& first, const std::string& last)
{
    return name + ":" + first + (first == last ? std::string() : ".." + last);
}

std::string bitNumber(int bit)
{
    return std::to_string(bit / bitsPerWord) + "." + std::to_string(bit % bitsPerWord);
}

// "M_bit" beside "M_W".
std::string bitType(const std::string& wordType)
{
    return wordType.substr(0, wordType.find('_')) + "_bit";
}

} // namespace

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
        return range(bitType(area.regName), bitNumber(from), bitNumber(last));
    }
    return std::string();
}

} // namespace dov417
