#include "live/manual_pages.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "line/failure.h"

namespace dov417 {

namespace {

const char* const pagesOption = "--write-manual-pages";
const char* const exampleIndent = "  ";

// Options stand with hyphens that can be copied; a long list may be broken at its commas.
std::string roff(const std::string& text)
{
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isInList = c == ',' && i + 1 < text.size() && text[i + 1] != ' ';
        if (i == 0 && (c == '.' || c == '\''))
            escaped += "\\&";
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : isInList ? ",\\:" : std::string(1, c);
    }
    return escaped;
}

// Spaces around a text in the help are its columns'.
std::string trimmed(const std::string& text)
{
    const std::size_t from = text.find_first_not_of(' ');
    return from == std::string::npos ? std::string()
                                     : text.substr(from, text.find_last_not_of(' ') - from + 1);
}

std::string upperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// A page's name as a command: "dov417-recipe-upload" is typed "dov417 recipe upload".
std::string typed(std::string name)
{
    std::replace(name.begin(), name.end(), '-', ' ');
    return name;
}

bool beginsWith(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

// What the page of this command shows it typed as: a program by its name, with its hyphens.
std::string typedFor(const CLI::App& command, const std::string& name)
{
    return command.get_name() == name ? name : typed(name);
}

// The page of a subcommand, below the page `name`.
std::string pageOf(std::string name, const CLI::App& command)
{
    return name.append("-").append(command.get_name());
}

std::vector<const CLI::App*> commandsOf(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App* command) {
        return !command->get_name().empty() && !command->get_group().empty();
    });
}

// A help's last part tells more, has examples, and says what its exit code means.
struct Footer {
    std::vector<std::string> description;
    std::vector<std::string> examples;
    std::vector<std::string> exitStatus;
};

Footer partsOf(const std::string& text)
{
    Footer footer;
    std::istringstream lines(text);
    std::vector<std::string>* part = &footer.description;
    for (std::string line; std::getline(lines, line);) {
        if (beginsWith(line, "Examples"))
            part = &footer.examples;
        else if (beginsWith(line, "Exits "))
            part = &footer.exitStatus;
        part->push_back(line);
    }
    if (!footer.examples.empty() && footer.examples.front() == "Examples:")
        footer.examples.erase(footer.examples.begin());
    return footer;
}

class Page {
public:
    explicit Page(const std::string& name)
    {
        text_ << ".TH " << roff(upperCase(name)) << " 1 \"\" \"dov417 " << DOV417_VERSION
              << "\" \"User Commands\"\n.ad l\n.nh\n";
    }

    void heading(const std::string& title)
    {
        text_ << ".SH " << upperCase(title) << "\n";
    }
    void subheading(const std::string& title)
    {
        text_ << ".SS " << roff(title) << "\n";
    }
    void line(const std::string& text)
    {
        text_ << roff(text) << "\n";
    }
    void entry(const std::string& term, const std::string& more, const std::string& text)
    {
        text_ << ".TP\n\\fB" << roff(term) << "\\fR" << roff(more) << "\n" << roff(text) << "\n";
    }
    // Each line is a paragraph; what is indented stands as it is.
    void paragraphs(const std::vector<std::string>& lines)
    {
        bool isAsItIs = false;
        bool isFirst = true;
        for (const std::string& each : lines) {
            const bool isExample = beginsWith(each, exampleIndent);
            if (isExample != isAsItIs)
                text_ << (isExample ? ".PP\n.nf\n" : ".fi\n.PP\n");
            else if (!isExample && !isFirst)
                text_ << ".PP\n";
            isAsItIs = isExample;
            isFirst = false;
            text_ << roff(isExample ? trimmed(each) : each) << "\n";
        }
        if (isAsItIs)
            text_ << ".fi\n";
    }
    void seeAlso(const std::vector<std::string>& names)
    {
        heading("See also");
        for (std::size_t i = 0; i < names.size(); ++i)
            text_ << ".BR " << roff(names[i]) << " (1)" << (i + 1 < names.size() ? ",\n" : "\n");
    }
    std::string text() const
    {
        return text_.str();
    }

private:
    std::ostringstream text_;
};

void addOptions(Page& page, const CLI::App& command)
{
    const CLI::Formatter help;
    const auto add = [&](const CLI::Option* option, bool isPositional) {
        const std::string name = trimmed(help.make_option_name(option, isPositional));
        const std::string more = help.make_option_opts(option);
        const std::string text = trimmed(help.make_option_desc(option));
        if (isPositional)
            page.entry(more.empty() ? name : trimmed(more), std::string(), text);
        else
            page.entry(name, more, text);
    };
    const auto isPositional = [](const CLI::Option* option) { return option->get_positional(); };
    const auto positionals = command.get_options(isPositional);
    if (!positionals.empty())
        page.heading("Arguments");
    for (const CLI::Option* option : positionals)
        add(option, true);
    page.heading("Options");
    for (const std::string& group : command.get_groups()) {
        const auto options = command.get_options([&](const CLI::Option* option) {
            return option->get_group() == group && option->nonpositional();
        });
        if (group.empty() || options.empty())
            continue;
        if (group != "Options") // as those are called that have no other name
            page.subheading(group);
        for (const CLI::Option* option : options)
            add(option, false);
    }
}

std::string synopsis(const CLI::App& command, const std::string& name)
{
    std::string text = typedFor(command, name) + " [OPTION...]";
    for (const CLI::Option* option :
         command.get_options([](const CLI::Option* each) { return each->get_positional(); })) {
        const std::string argument = trimmed(CLI::Formatter().make_option_opts(option));
        text.append(" ").append(argument.empty() ? option->get_name(true) : argument);
    }
    return commandsOf(command).empty() ? text : text + " COMMAND";
}

void writePage(const CLI::App& command, const std::string& name, const char* folder)
{
    const std::string file = std::string(folder).append("/").append(name).append(".1");
    std::ofstream page(file);
    page << manualPage(command, name);
    if (!page.flush())
        throw Failure("cannot write " + file);
}

void writePages(const CLI::App& app, const std::string& name, const char* folder)
{
    for (const CLI::App* command : commandsOf(app)) {
        const std::string own = pageOf(name, *command);
        writePage(*command, own, folder);
        writePages(*command, own, folder);
    }
}

} // namespace

std::string manualPage(const CLI::App& command, const std::string& name)
{
    Page page(name);
    const Footer footer = partsOf(command.get_footer());
    page.heading("Name");
    page.line(name + " - " + command.get_description());
    page.heading("Synopsis");
    page.line(synopsis(command, name));
    if (!footer.description.empty()) {
        page.heading("Description");
        page.paragraphs(footer.description);
    }
    std::vector<std::string> others = {name.substr(0, name.rfind('-'))};
    const std::vector<const CLI::App*> commands = commandsOf(command);
    if (!commands.empty())
        page.heading("Commands");
    for (const CLI::App* below : commands) {
        page.entry(below->get_name(), std::string(), below->get_description());
        others.push_back(pageOf(name, *below));
    }
    addOptions(page, command);
    if (!footer.examples.empty()) {
        page.heading("Examples");
        page.paragraphs(footer.examples);
    }
    if (!footer.exitStatus.empty()) {
        page.heading("Exit status");
        page.paragraphs(footer.exitStatus);
    }
    if (others.front() != "dov417")
        others.insert(others.begin(), "dov417");
    page.seeAlso(others);
    return page.text();
}

std::optional<int> writeManualPages(const CLI::App& app, int argc, char** argv)
{
    if (argc != 3 || argv[1] != std::string(pagesOption))
        return std::nullopt;
    // The page of a program with commands is written by hand.
    if (commandsOf(app).empty())
        writePage(app, app.get_name(), argv[2]);
    writePages(app, app.get_name(), argv[2]);
    return EXIT_SUCCESS;
}

} // namespace dov417
