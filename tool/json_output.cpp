#include "tool/json_output.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <utility>

#include "text/address_values.h"
#include "text/json_value.h"
#include "tool/defaults.h"

namespace dov417 {

namespace {

std::string nameOf(const CLI::App& command)
{
    const CLI::App* const parent = command.get_parent();
    const bool isBelowAnother = parent && parent->get_parent();
    return (isBelowAnother ? parent->get_name() + " " : "") + command.get_name();
}

// With its origins; what goes to the output has it, too.
std::string failureText(const std::exception& failure, const Action& chosen)
{
    std::string text = withOrigins(failure.what(), chosen.origins);
    if (!chosen.json.empty())
        sayJson({{"failure", text}});
    return text;
}

void sayJsonHead(const Action& chosen)
{
    if (!chosen.json.empty())
        sayJson({{"version", DOV417_VERSION}, {"command", chosen.json}});
}

// JSON escapes the control characters below the blank alone; a terminal has orders beyond: DEL, and
// C1, whose two bytes in UTF-8 are C2 and 80 to 9F.
std::string withoutOrders(const std::string& json)
{
    std::string text;
    for (const char c : json) {
        const unsigned byte = static_cast<unsigned char>(c);
        const bool isC1 = !text.empty() && text.back() == '\xC2' && byte >= 0x80 && byte <= 0x9F;
        if (isC1)
            text.pop_back();
        if (!isC1 && c != '\x7F') {
            text += c;
            continue;
        }
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
        text += escaped;
    }
    return text;
}

} // namespace

CLI::Option* addJsonFlag(CLI::App& command, Action& chosen, std::function<void()> wanted)
{
    return command.add_flag_callback(
        "--json",
        [&command, &chosen, wanted = std::move(wanted)]() {
            chosen.json = nameOf(command);
            wanted();
        },
        "One JSON object a line, in the form of docs/json-output.md");
}

CLI::Option* addJsonFlag(CLI::App& command, Action& chosen, bool& wanted)
{
    return addJsonFlag(command, chosen, [&wanted]() { wanted = true; });
}

int runChosen(const Action& chosen)
{
    sayJsonHead(chosen);
    try {
        return chosen();
    } catch (const UsageFailure& failure) {
        throw UsageFailure(failureText(failure, chosen));
    } catch (const std::exception& failure) {
        throw Failure(failureText(failure, chosen));
    }
}

void sayJson(const OutputJson& object)
{
    // What an adapter calls itself, or a log holds, need not be UTF-8.
    const std::string text = object.dump(-1, ' ', false, OutputJson::error_handler_t::replace);
    std::printf("%s\n", withoutOrders(text).c_str());
    std::fflush(stdout);
}

void addValues(OutputJson& object, const std::string& key, const Item& item,
               const std::vector<unsigned char>& bytes)
{
    const Format hex{Notation::hex, item.format.order};
    OutputJson values = OutputJson::array();
    OutputJson bits = OutputJson::array();
    bool isAllNumbers = true;
    for (int i = 0; i < valueCount(item.address); ++i) {
        const Address one = valueOf(item.address, i);
        const unsigned char* const value =
            bytes.data() + static_cast<std::ptrdiff_t>(i) * byteCount(one);
        values.push_back(jsonValue(valueTexts(one, item.format, value).front()));
        const bool isNumber = !values.back().is_null();
        isAllNumbers = isAllNumbers && isNumber;
        bits.push_back(isNumber ? OutputJson() : OutputJson(valueTexts(one, hex, value)[0]));
    }
    object[key] = std::move(values);
    if (!isAllNumbers)
        object[key + "Bits"] = std::move(bits);
    if (!item.format.scaling.unit.empty())
        object["unit"] = item.format.scaling.unit;
}

void addReason(OutputJson& object, const std::string& key, const std::string& reason,
               const std::string& why)
{
    object[key] = reason;
    if (!why.empty())
        object["why"] = why;
}

OutputJson itemJson(const Library& library, const Item& item)
{
    return {{"name", item.name}, {"address", toText(library, item.address)}};
}

} // namespace dov417
