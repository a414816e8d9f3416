#include "session/recipe_wishes.h"

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "line/frame_bytes.h"

namespace dov417 {

namespace {

struct RecipeWish {
    unsigned bits = 0;
    unsigned known = 0; // which of them
    std::string name;   // whose wish it is
};
using RecipeWishes = std::map<std::tuple<int, std::string, int>, std::vector<RecipeWish>>;

void add(RecipeWishes& wishes, const Address& address, int word, const RecipeWish& wish)
{
    std::vector<RecipeWish>& here = wishes[{address.station, areaOf(address.regName), word}];
    for (const RecipeWish& other : here)
        if (((other.bits ^ wish.bits) & other.known & wish.known) != 0)
            throw UsageFailure(other.name + " and " + wish.name +
                               " want different values of the same place, " +
                               std::to_string(address.station) + "/" + wordsOf(address).regName +
                               ":" + std::to_string(word));
    here.push_back(wish);
}

void addWishes(RecipeWishes& wishes, const RecipeEntry& entry)
{
    const Address& address = entry.item.address;
    constexpr unsigned all = 0xFFFF;
    for (int unit = 0; unit < address.length; ++unit) {
        const auto at = static_cast<std::size_t>(unit);
        const int place = address.first + unit;
        if (address.width == Width::bit) {
            const int bit = place % bitsPerWord;
            add(wishes, address, place / bitsPerWord,
                {static_cast<unsigned>(entry.data.at(at) != 0) << bit, 1U << bit, entry.item.name});
        } else {
            const unsigned word =
                entry.data.at(2 * at) | static_cast<unsigned>(entry.data.at(2 * at + 1)) << 8;
            add(wishes, address, place, {word, all, entry.item.name});
        }
    }
}

} // namespace

void requireOneWish(const std::vector<RecipeEntry>& entries)
{
    RecipeWishes wishes;
    for (const RecipeEntry& entry : entries)
        addWishes(wishes, entry);
}

} // namespace dov417
