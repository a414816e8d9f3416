#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "text/tags.h"
#include "text/wildcards.h"
#include "tool/defaults.h"
#include "tool/json_output.h"

namespace dov417 {

namespace {

struct CheckOptions {
    LineOptions line;
    std::vector<std::string> addresses;
    std::string tags;
    bool write = false;
    bool json = false;
};

// With a format of its own, one value of a tag, or just an address.
Address addressOf(const Library& library, const std::string& text, const std::string& tags)
{
    if (text.find_first_of("@[") != std::string::npos) {
        try {
            ItemSource source;
            source.tags = tags;
            return Items(library, source).find(text, Access::read).address;
        } catch (const AddressFailure&) {
            throw;
        } catch (const UsageFailure& failure) {
            throw AddressFailure(text, failure.what(), 0);
        }
    }
    if (const std::string why = whyNotFound(library, text, tags); !why.empty())
        throw AddressFailure(text, why, 0);
    return parseAddress(library, text, BitNumbers::asTheyAreRead);
}

void tellValid(const Library& library, const std::string& text, const Address& address, bool json)
{
    const int values = valueCount(address);
    const std::string inFull = toText(library, address);
    if (json) {
        sayJson({{"text", text},
                 {"valid", true},
                 {"address", inFull},
                 {"first", address.first},
                 {"count", values},
                 {"isBroadcast", address.station == 0}});
        return;
    }
    std::printf("%s  valid  address value %d, %d value%s, %s%s\n", text.c_str(), address.first,
                values, values == 1 ? "" : "s", inFull.c_str(),
                address.station == 0 ? ", only to be written: a broadcast" : "");
}

void tellNotValid(const std::string& text, const AddressFailure& failure, bool json)
{
    if (json) {
        OutputJson object = {{"text", text}, {"valid", false}};
        if (failure.code != checkValid)
            object["code"] = failure.code;
        object["reason"] = failure.why;
        sayJson(object);
        return;
    }
    const std::string code =
        failure.code == checkValid ? "" : " (code " + std::to_string(failure.code) + ")";
    std::printf("%s  not valid%s  %s\n", text.c_str(), code.c_str(), failure.why.c_str());
}

// With each wildcard's tags in its place; one that stands for none is told of like any other text.
std::vector<std::string> namesOf(const std::vector<Tag>& tags,
                                 const std::vector<std::string>& texts)
{
    std::vector<std::string> names;
    for (const std::string& text : texts) {
        const std::vector<Tag> matching = isWildcard(text) && !findTag(tags, text)
                                              ? matchingTags(tags, text)
                                              : std::vector<Tag>();
        for (const Tag& tag : matching)
            names.push_back(tag.name);
        if (matching.empty())
            names.push_back(text);
    }
    return names;
}

// One line an address: valid or not, why, and the address value.
int runCheck(const CheckOptions& options)
{
    const Library library(options.line.library);
    const std::vector<Tag> tags =
        options.tags.empty() ? std::vector<Tag>() : readTags(library, options.tags, remarkOnce);
    std::vector<std::string> texts = options.addresses;
    if (texts.empty())
        for (const Tag& tag : tags)
            texts.push_back(tag.name);
    if (texts.empty())
        throw UsageFailure("no address given");
    int exitCode = exitDone;
    for (const std::string& text : namesOf(tags, texts)) {
        try {
            const Tag* const tag = findTag(tags, text);
            const Address address = tag ? tag->address : addressOf(library, text, options.tags);
            if (options.write)
                requireAccess(library, address, Access::write);
            tellValid(library, text, address, options.json);
        } catch (const AddressFailure& failure) {
            exitCode = exitFailed;
            tellNotValid(text, failure, options.json);
        }
    }
    return exitCode;
}

} // namespace

void addCheckCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<CheckOptions>();
    CLI::App* command = app.add_subcommand("check", "Is an address valid, and if not, why");
    command
        ->add_option(
            "address", options->addresses,
            "[STATION/]REGISTER:FIRST[..LAST]; FIRST and LAST name words, or bits of a bit "
            "type. A range of R_D names its words, two a value. With --tags, tag names too; with "
            "--tags alone, every tag")
        ->option_text("ADDRESS...");
    addTagOption(*command, options->tags);
    command->add_flag("--write", options->write, "Ask for an address that is to be written");
    addJsonFlag(*command, chosen, options->json);
    addLibraryOption(*command, options->line);
    addDefaults(*command, {nullptr, &options->tags}, chosen);
    command->footer("Examples:\n"
                    "  dov417 check R_W:100 M_bit:1.0..1.15 2/R_D:10..13 T:5\n"
                    "  dov417 check --write 0/R_W:100\n"
                    "Exits with 1 if any address is not valid.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runCheck(*options); }; });
}

} // namespace dov417
