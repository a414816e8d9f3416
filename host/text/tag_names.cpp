#include "text/tag_names.h"

#include <map>

#include "text/addresses.h"

namespace dov417 {

std::optional<NameClash> clashOf(const std::vector<Tag>& tags)
{
    std::map<std::string, std::size_t> placeOfName;
    for (std::size_t i = 0; i < tags.size(); ++i)
        placeOfName.emplace(tags[i].name, i);

    std::optional<NameClash> first;
    for (const auto& [name, place] : placeOfName) {
        const std::size_t bracket = name.rfind('[');
        if (bracket == std::string::npos || (first && place > first->tag))
            continue;
        const auto block = placeOfName.find(name.substr(0, bracket));
        if (block == placeOfName.end())
            continue;
        const int values = valueCount(tags[block->second].address);
        for (int i = 0; values > 1 && i < values; ++i)
            if (name == block->first + "[" + std::to_string(i) + "]")
                first = NameClash{place, "'" + name + "' is one of the values of '" + block->first +
                                             "' already"};
    }
    return first;
}

} // namespace dov417
