#include "tool/own_files.h"

#include <filesystem>
#include <vector>

#include "line/failure.h"

namespace dov417 {

namespace {

namespace fs = std::filesystem;

// Whether they are there or not. Devices are not compared: writing to a terminal loses nothing.
bool isOneFile(const std::string& a, const std::string& b)
{
    if (a.empty() || b.empty() || a == "-" || b == "-")
        return false;
    std::error_code isMissing;
    if (fs::exists(a, isMissing))
        return fs::is_regular_file(a, isMissing) && fs::equivalent(a, b, isMissing);
    return !fs::exists(b, isMissing) &&
           fs::weakly_canonical(a, isMissing) == fs::weakly_canonical(b, isMissing);
}

std::string valueOfOption(const CLI::App& command, const char* name)
{
    const CLI::Option* const option = command.get_option_no_throw(name);
    return option && option->count() > 0 ? option->as<std::string>() : std::string();
}

} // namespace

void requireOwnFiles(const CLI::App& command, const std::string& tags, const std::string& project)
{
    const std::string recipe = command.get_parent() && command.get_parent()->get_name() == "recipe"
                                   ? valueOfOption(command, "file")
                                   : std::string();
    const bool isWritten = command.get_name() == "upload";
    struct Named {
        std::string name;
        std::string file;
    };
    const std::vector<Named> written = {{"--log", valueOfOption(command, "--log")},
                                        {"--csv", valueOfOption(command, "--csv")},
                                        {"the recipe", isWritten ? recipe : std::string()}};
    const std::vector<Named> read = {{"has the tags", tags},
                                     {"is the project", project},
                                     {"is the recipe", isWritten ? std::string() : recipe}};
    for (std::size_t i = 0; i < written.size(); ++i) {
        const Named& own = written.at(i);
        for (const Named& other : read)
            if (isOneFile(own.file, other.file))
                throw UsageFailure(own.file + " " + other.name +
                                   "; name another file, as this one would be lost");
        for (std::size_t j = 0; j < i; ++j)
            if (isOneFile(own.file, written.at(j).file))
                throw UsageFailure(written.at(j).name + " and " + own.name + " both name " +
                                   own.file);
    }
}

} // namespace dov417
