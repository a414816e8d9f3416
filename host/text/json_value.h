// Values in JSON.
#ifndef DOV417_TEXT_JSON_VALUE_H
#define DOV417_TEXT_JSON_VALUE_H

#include <nlohmann/json.hpp>
#include <string>

namespace dov417 {

// A number for the text of one, in the shortest form that reads back the same; true and false; text
// for what is not written so, as hex digits are, and a text without its quotes; null for "nan",
// "inf" and "-inf", which JSON has no number for.
nlohmann::ordered_json jsonValue(const std::string& text);

} // namespace dov417

#endif
