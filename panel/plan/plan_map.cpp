#include "panel/plan/plan_map.h"

#include <algorithm>
#include <map>
#include <utility>

#include "session/pieces.h"

namespace dov417 {

namespace {

// A gap of more changes nothing: no request is longer.
constexpr int widestGap = 128;

using PlanArea = std::pair<int, std::string>; // station, word type
using PlanWords = std::map<PlanArea, std::map<int, PlanWord>>;

void addRequest(PlanWords& words, const PlannedRequest& request, int number)
{
    std::map<int, PlanWord>& area = words[{request.station, wordTypeOf(request.regName)}];
    const auto addFrame = [&area, &request](int first, int length) {
        for (int i = 0; i < length; ++i)
            area[first + i].isBeyondLimit |= i >= maxWordsOfARead;
        area[first].beginsPart |= first != request.address;
    };
    for (int i = 0; i < request.length; ++i)
        area[request.address + i].requests.push_back(number);
    if (request.parts.empty())
        addFrame(request.address, request.length);
    for (const PlannedPart& part : request.parts)
        addFrame(part.address, part.length);
    area[request.address].beginsRequest = true;
    area[request.address + request.length - 1].endsRequest = true;
}

WordUse useOf(const PlanWord& word)
{
    if (word.values.empty())
        return word.requests.empty() ? WordUse::notAsked : WordUse::readAlong;
    return word.requests.empty() ? WordUse::uncovered : WordUse::watched;
}

} // namespace

std::string wordTypeOf(const std::string& regName)
{
    const std::string area = areaOf(regName);
    return area == regName ? area : area + "_W";
}

std::vector<PlanRow> planRows(const std::vector<PanelValue>& values, const Plan& plan)
{
    PlanWords words;
    int place = 0;
    for (const PanelValue& value : values) {
        const Words of = wordsOf(value.address.width, value.address.first, value.address.length);
        std::map<int, PlanWord>& area =
            words[{value.address.station, wordTypeOf(value.address.regName)}];
        for (int word = of.first; word < of.first + of.count; ++word)
            area[word].values.push_back(place);
        ++place;
    }
    int number = 0;
    for (const PlannedRequest& request : plan.requests)
        addRequest(words, request, number++);

    std::vector<PlanRow> rows;
    for (auto& [area, inArea] : words)
        for (auto& [at, word] : inArea) {
            const int first = at - at % PlanRow::words;
            const bool isSameArea = !rows.empty() && rows.back().station == area.first &&
                                    rows.back().regName == area.second;
            if (!isSameArea || rows.back().first != first) {
                PlanRow row;
                row.station = area.first;
                row.regName = area.second;
                row.first = first;
                row.goesOn = isSameArea && rows.back().first + PlanRow::words == first;
                rows.push_back(row);
            }
            word.use = useOf(word);
            rows.back().cells.at(static_cast<std::size_t>(at - first)) = std::move(word);
        }
    return rows;
}

std::vector<int> wordsReadAlong(const std::vector<PlanRow>& rows, const Plan& plan)
{
    std::vector<int> counts(plan.requests.size());
    for (const PlanRow& row : rows)
        for (const PlanWord& word : row.cells)
            if (word.use == WordUse::readAlong)
                for (const int request : word.requests)
                    ++counts.at(static_cast<std::size_t>(request));
    return counts;
}

std::vector<Address> plannedAddresses(const std::vector<Item>& items)
{
    std::vector<Address> addresses;
    for (const Address& address : watchedAddresses(items))
        for (const Address& piece : watchPieces(address))
            addresses.push_back(piece);
    return addresses;
}

int gapToUse(const GapOutcome& outcome)
{
    const int last = outcome.lastGap < 0 ? std::max(outcome.firstGap, widestGap) : outcome.lastGap;
    for (const int units : {4, 2}) // words of the widest values
        if (const int whole = last - last % units; whole >= outcome.firstGap)
            return whole;
    return last;
}

std::string planWordsText(int station, const std::string& regName, int first, int count)
{
    return std::to_string(station) + "/" + regName + ":" + std::to_string(first) +
           (count > 1 ? ".." + std::to_string(first + count - 1) : "");
}

std::string gapRange(const GapOutcome& outcome)
{
    const std::string first = std::to_string(outcome.firstGap);
    if (outcome.lastGap < 0)
        return first + " \u2026";
    return outcome.lastGap == outcome.firstGap
               ? first
               : first + " \u2026 " + std::to_string(outcome.lastGap);
}

} // namespace dov417
