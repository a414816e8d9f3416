// Values in JSON: as numbers where that changes nothing, else as text.
#ifndef DOV417_TEXT_JSON_VALUE_H
#define DOV417_TEXT_JSON_VALUE_H

#include <nlohmann/json.hpp>
#include <string>

namespace dov417 {

// 42 for "42", "0x00FF" for "0x00FF", "nan" for "nan".
inline nlohmann::ordered_json jsonValue(const std::string& text)
{
    using Json = nlohmann::ordered_json;
    const Json number = Json::parse(text, nullptr, false);
    return number.is_number() && number.dump() == text ? number : Json(text);
}

} // namespace dov417

#endif
