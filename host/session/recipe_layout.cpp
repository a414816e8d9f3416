#include "session/recipe_layout.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>

#include "session/pieces.h"

namespace dov417 {

namespace {

auto sortKey(const Address& address)
{
    return std::tie(address.station, address.regName, address.first);
}

std::vector<Address> joinTouching(std::vector<Address> addresses)
{
    std::sort(addresses.begin(), addresses.end(),
              [](const Address& a, const Address& b) { return sortKey(a) < sortKey(b); });
    std::vector<Address> runs;
    for (const Address& address : addresses) {
        const bool touches = !runs.empty() && runs.back().station == address.station &&
                             runs.back().regName == address.regName &&
                             address.first <= runs.back().first + runs.back().length;
        if (!touches) {
            runs.push_back(address);
            continue;
        }
        Address& run = runs.back();
        run.length = std::max(run.length, address.first + address.length - run.first);
    }
    return runs;
}

// As long as a write carries, in even words, and no value is cut in two.
int recordLength(const Address& run, int done, const WholeValues& wholeValues)
{
    int length = std::min(maxWordsOfAWrite - maxWordsOfAWrite % 2, run.length - done);
    while (length > 1 && wholeValues.goOn(run.station, run.regName, run.first + done + length))
        --length;
    if (wholeValues.goOn(run.station, run.regName, run.first + done + length))
        throw UsageFailure("values overlap so that no request holds them whole: move them in "
                           "recipes of their own");
    return length;
}

} // namespace

RecipeLayout layOutRecipe(const std::vector<Address>& addresses)
{
    RecipeLayout layout;
    layout.wholeValues = WholeValues(addresses);
    for (const Address& run : joinTouching(addresses)) {
        std::size_t piecesOfRun = 0;
        for (int done = 0, piece = 0; done < run.length; done += piece) {
            piece = recordLength(run, done, layout.wholeValues);
            RecipeRecord record;
            record.address = run;
            record.address.first = run.first + done;
            record.address.length = piece;
            record.bufferOffset = static_cast<int>(layout.bufferWords);
            layout.bufferWords += static_cast<std::size_t>(record.address.length);
            const std::size_t round = piecesOfRun++ % 2;
            if (layout.rounds.size() <= round)
                layout.rounds.resize(round + 1);
            layout.rounds.at(round).push_back(record);
        }
    }
    return layout;
}

std::size_t RecipeLayout::offsetOf(const Address& address) const
{
    for (const std::vector<RecipeRecord>& round : rounds)
        for (const RecipeRecord& record : round)
            if (record.address.station == address.station &&
                record.address.regName == address.regName &&
                record.address.first <= address.first &&
                address.first < record.address.first + record.address.length)
                return static_cast<std::size_t>(record.bufferOffset + address.first -
                                                record.address.first);
    throw std::logic_error("address outside its recipe");
}

} // namespace dov417
