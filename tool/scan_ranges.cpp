#include "tool/scan_ranges.h"

#include "text/addresses.h"

namespace dov417 {

std::vector<WordRun> wordRuns(const Library& library, const std::vector<Area>& areas,
                              const std::vector<std::string>& addresses)
{
    std::vector<WordRun> runs;
    for (const std::string& text : addresses) {
        const Address address = parseAddress(library, text);
        requireAccess(library, address, Access::read);
        const Words words = wordsOf(address.width, address.first, address.length);
        for (const Area& area : areas)
            if (areaOf(area.regName) == areaOf(address.regName))
                runs.push_back({address.station, area, words.first, words.count});
    }
    return runs;
}

std::set<int> stationsOf(const std::vector<WordRun>& runs)
{
    std::set<int> stations;
    for (const WordRun& run : runs)
        stations.insert(run.station);
    return stations;
}

std::string rangeText(const WordRun& run, int first, int count)
{
    const std::string text =
        std::to_string(run.station) + "/" + run.area.regName + ":" + std::to_string(first);
    return count == 1 ? text : text + ".." + std::to_string(first + count - 1);
}

} // namespace dov417
