// What --json prints: one object a line, in the form of docs/json-output.schema.json.
#ifndef DOV417_TOOL_JSON_OUTPUT_H
#define DOV417_TOOL_JSON_OUTPUT_H

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "session/items.h"
#include "tool/options.h"

namespace CLI {
class Option;
}

namespace dov417 {

using OutputJson = nlohmann::ordered_json;

// Adds --json, which calls wanted(). The standard output has nothing else then: runChosen()
// prints the object that begins it, and what an exception tells.
CLI::Option* addJsonFlag(CLI::App& command, Action& chosen, std::function<void()> wanted);
CLI::Option* addJsonFlag(CLI::App& command, Action& chosen, bool& wanted);

// Does what the command line asks for, and returns what the program ends with. Throws what that
// throws, as a Failure or a UsageFailure that says where the settings in its message came from.
int runChosen(const Action& chosen);
void sayJson(const OutputJson& object);

// Values under `key`, and what is no number in JSON as hex digits beside it: "values": [null],
// "valuesBits": ["0x7FC00000"]; the unit too.
void addValues(OutputJson& object, const std::string& key, const Item& item,
               const std::vector<unsigned char>& bytes);
// The reason under `key`, and its kind as "why" where it has one.
void addReason(OutputJson& object, const std::string& key, const std::string& reason,
               const std::string& why);
// An object with the item's name and address.
OutputJson itemJson(const Library& library, const Item& item);

} // namespace dov417

#endif
