// JSON that a person may have written, with the place of each of its members for messages.
#ifndef DOV417_TEXT_PLACED_JSON_H
#define DOV417_TEXT_PLACED_JSON_H

#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace dov417 {

using OrderedJson = nlohmann::ordered_json;

class PlacedJson {
public:
    // An object without anything in it.
    PlacedJson() = default;
    // Throws a UsageFailure with the place where the text is no JSON, has a member twice or goes
    // too deep. `file` names it in messages.
    PlacedJson(const std::string& text, const std::string& file);

    const OrderedJson& root() const;
    const std::string& file() const;

    // "FILE:LINE:COLUMN: PATH: WHY". A path is as memberPath() and elementPath() make it; that of
    // the root is empty.
    [[noreturn]] void refuse(const std::string& path, const std::string& why) const;
    // From 1; 0 where there is no such member.
    int line(const std::string& path) const;

private:
    std::string position(std::size_t offset) const;

    std::string text_;
    std::string file_;
    OrderedJson root_ = OrderedJson::object();
    std::map<std::string, std::size_t> offsets_; // by path
    std::vector<std::size_t> lineEnds_;          // a large file is asked for many lines
};

// "tags" and "name" are "tags.name"; "tags" and 3 are "tags[3]".
std::string memberPath(const std::string& parent, const std::string& name);
std::string elementPath(const std::string& parent, std::size_t index);

} // namespace dov417

#endif
