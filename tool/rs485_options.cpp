#include "tool/rs485_options.h"

#include <CLI/CLI.hpp>

namespace dov417 {

void addRs485Options(CLI::App& command, Rs485& options, const std::string& group)
{
    CLI::Option* const rs485 = command.add_flag(
        "--rs485", options.isWanted,
        "Have the port's driver turn the transmitter of a two-wire line on and off; for ports of "
        "this machine whose driver can");
    const auto addDelay = [&](const char* name, int& delay, const char* text) {
        return command.add_option(name, delay, text)
            ->option_text("MS")
            ->check(CLI::Range(0, maxRs485DelayMs))
            ->needs(rs485);
    };
    CLI::Option* const before =
        addDelay("--rs485-before", options.delayBeforeMs,
                 "With --rs485: from turning the transmitter on to the first bit (0)");
    CLI::Option* const after =
        addDelay("--rs485-after", options.delayAfterMs,
                 "With --rs485: from the last bit to turning the transmitter off (0)");
    if (!group.empty())
        for (CLI::Option* const option : {rs485, before, after})
            option->group(group);
}

} // namespace dov417
