#include "live/line_setup.h"

#include "line/wire.h"

namespace dov417 {

WireFormat wireFormat(const Library& library, const LineSetup& setup)
{
    return parseWireFormat(setup.line.empty() ? defaultLine(library) : setup.line);
}

SessionSettings sessionSettings(const LineSetup& setup)
{
    return {setup.retries, setup.mergeGap()};
}

} // namespace dov417
