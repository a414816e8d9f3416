// A serial format in records: "38400,8,EVEN,1". For files that read or write JSON anyway.
#ifndef DOV417_LIVE_SERIAL_FORMAT_JSON_H
#define DOV417_LIVE_SERIAL_FORMAT_JSON_H

#include <nlohmann/json.hpp>

#include "line/serial_format.h"

namespace dov417 {

inline void to_json(nlohmann::json& json, const SerialFormat& format)
{
    json = toText(format);
}

inline void from_json(const nlohmann::json& json, SerialFormat& format)
{
    format = parseSerialFormat(json.get<std::string>());
}

} // namespace dov417

#endif
