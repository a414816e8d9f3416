#include "live/manual_pages.h"

#include <CLI/CLI.hpp>
#include <gmock/gmock.h>

namespace dov417 {

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

class ManualPageOf : public ::testing::Test {
protected:
    std::string page() const
    {
        return manualPage(command, "dov417-pump");
    }
    CLI::App command{"Turns the pump", "pump"};
};

TEST_F(ManualPageOf, ACommandHasTheTextsOfItsHelp)
{
    command.add_option("who", "Whose pump")->option_text("NAME...");
    command.add_flag("--fast", "At 100% and more")->group("Speed");
    command.add_option("--from", "Where to begin")->option_text("A,B,C");
    command.footer(
        "One.\nTwo.\nExamples:\n  dov417 pump --fast a\\b\nAnd so on.\nExits with 1 if dry.");
    EXPECT_THAT(page(), HasSubstr(".SH NAME\ndov417\\-pump \\- Turns the pump\n"
                                  ".SH SYNOPSIS\ndov417 pump [OPTION...] NAME...\n"
                                  ".SH DESCRIPTION\nOne.\n.PP\nTwo.\n"
                                  ".SH ARGUMENTS\n.TP\n\\fBNAME...\\fR\nWhose pump\n"
                                  ".SH OPTIONS\n.TP\n"));
    EXPECT_THAT(page(), HasSubstr("\\fB\\-\\-from\\fR A,\\:B,\\:C\nWhere to begin\n"));
    EXPECT_THAT(page(), HasSubstr(".SS Speed\n.TP\n\\fB\\-\\-fast\\fR\nAt 100% and more\n"));
    EXPECT_THAT(page(), EndsWith(".SH EXAMPLES\n.PP\n.nf\ndov417 pump \\-\\-fast a\\eb\n.fi\n.PP\n"
                                 "And so on.\n.SH EXIT STATUS\nExits with 1 if dry.\n"
                                 ".SH SEE ALSO\n.BR dov417 (1)\n"));
    EXPECT_THAT(page(), Not(HasSubstr(".SS Options")));
}

TEST_F(ManualPageOf, ATextThatLooksLikeARequestOfRoffIsNone)
{
    command.footer(".SH me\n'quoted'\nExamples:\n  .dot");
    EXPECT_THAT(page(), HasSubstr(".SH DESCRIPTION\n\\&.SH me\n.PP\n\\&'quoted'\n"));
    EXPECT_THAT(page(), HasSubstr(".nf\n\\&.dot\n.fi\n"));
}

TEST_F(ManualPageOf, ACommandNamesThoseBeneathItAndLeavesOutHiddenOnes)
{
    command.add_subcommand("start", "Begins");
    command.add_subcommand("secret", "Hides")->group("");
    EXPECT_THAT(page(), HasSubstr("dov417 pump [OPTION...] COMMAND\n"
                                  ".SH COMMANDS\n.TP\n\\fBstart\\fR\nBegins\n.SH OPTIONS\n"));
    EXPECT_THAT(page(), Not(HasSubstr("secret")));
    EXPECT_THAT(page(), EndsWith(".BR dov417 (1),\n.BR dov417\\-pump\\-start (1)\n"));
    EXPECT_THAT(manualPage(*command.get_subcommand("start"), "dov417-pump-start"),
                EndsWith(".BR dov417 (1),\n.BR dov417\\-pump (1)\n"));
}

TEST_F(ManualPageOf, AProgramIsTypedAsItIsCalled)
{
    const CLI::App program{"Shows the pump", "dov417-pump"};
    EXPECT_THAT(manualPage(program, "dov417-pump"),
                HasSubstr(".SH SYNOPSIS\ndov417\\-pump [OPTION...]"));
}

} // namespace

} // namespace dov417
