// The settings of a line by name: that of the tool's option, and of the member in a project file.
#ifndef DOV417_LIVE_LINE_MEMBERS_H
#define DOV417_LIVE_LINE_MEMBERS_H

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "live/line_setup.h"

namespace dov417 {

// A bool is named by what differs from its default: "no-function-8" is true where none may be sent.
using LineField = std::variant<std::string LineSetup::*, bool LineSetup::*, int LineSetup::*,
                               std::optional<int> LineSetup::*, double LineSetup::*>;

struct LineMember {
    const char* name;
    LineField field;
    double min; // of a number
    double max;
};

// All but the log: what is recorded is each time's own choice.
const std::vector<LineMember>& lineMembers();
// One of these names.
const LineMember& lineMember(const std::string& name);

bool isDefault(const LineMember& member, const LineSetup& setup);
void copyMember(const LineMember& member, const LineSetup& from, LineSetup& to);
// As it would be typed; "true" for a bool that is not the default.
std::string memberText(const LineMember& member, const LineSetup& setup);

} // namespace dov417

#endif
