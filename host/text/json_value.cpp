#include "text/json_value.h"

#include <cmath>
#include <cstdint>

#include "text/characters.h"

namespace dov417 {

namespace {

using Json = nlohmann::ordered_json;

// Up to here every whole number is a double of its own.
constexpr double maxWhole = 9007199254740992.0;

bool isNoJsonNumber(const std::string& text)
{
    return text == "nan" || text == "-nan" || text == "inf" || text == "-inf";
}

} // namespace

Json jsonValue(const std::string& text)
{
    if (!text.empty() && text.front() == '"')
        return withoutQuotes(text);
    if (isNoJsonNumber(text))
        return nullptr;
    Json number = Json::parse(text, nullptr, false);
    if (number.is_boolean())
        return number;
    if (!number.is_number())
        return text;
    const double value = number.get<double>();
    if (value == 0 && text.front() == '-')
        return -0.0; // as a whole number it would lose its sign
    if (number.is_number_float() && std::floor(value) == value && std::abs(value) < maxWhole)
        return static_cast<std::int64_t>(value);
    return number;
}

} // namespace dov417
