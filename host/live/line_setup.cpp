#include "live/line_setup.h"

#include <sstream>

#include "driver/default_line.h"
#include "line/serial_format.h"

namespace dov417 {

SerialFormat serialFormat(const Library& library, const LineSetup& setup)
{
    const SerialFormat whole =
        parseRtuFormat(setup.line.empty() ? defaultLine(library) : setup.line);
    const std::string* const own[] = {&setup.baud, &setup.dataBits, &setup.parity, &setup.stopBits};
    std::istringstream parts(toText(whole));
    std::string text;
    std::string part;
    for (const std::string* const each : own) {
        std::getline(parts, part, ',');
        text.append(text.empty() ? "" : ",").append(each->empty() ? part : *each);
    }
    return parseRtuFormat(text);
}

SessionSettings sessionSettings(const LineSetup& setup)
{
    return {setup.retries, setup.mergeGap()};
}

} // namespace dov417
