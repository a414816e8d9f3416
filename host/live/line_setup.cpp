#include "live/line_setup.h"

#include "driver/default_line.h"
#include "line/serial_format.h"

namespace dov417 {

SerialFormat serialFormat(const Library& library, const LineSetup& setup)
{
    return parseRtuFormat(setup.line.empty() ? defaultLine(library) : setup.line);
}

SessionSettings sessionSettings(const LineSetup& setup)
{
    return {setup.retries, setup.mergeGap()};
}

} // namespace dov417
