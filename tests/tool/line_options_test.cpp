#include "tool/options.h"

#include <CLI/CLI.hpp>

#include "line_fields.h"
#include "live/live_line.h"
#include "loaded_library.h"

namespace dov417 {

namespace {

struct OptionCase {
    const char* name;
    const char* typed;
    LineFields changed;
};

class LineOptionsOfACommand : public LoadedLibrary,
                              public ::testing::WithParamInterface<OptionCase> {};

TEST_P(LineOptionsOfACommand, ReachTheLine)
{
    LineOptions options;
    CLI::App app;
    addLineOptions(app, options);
    app.parse(std::string("--port /dev/ttyS99 ") + GetParam().typed);
    EXPECT_EQ(fieldsOf(LiveLine(library, options, {}).settings()), defaultsBut(GetParam().changed));
}

const OptionCase optionCases[] = {
    {"None", "", {}},
    {"timeout", "--timeout 300", {{"timeout", 300}, {"isTimeoutFixed", 1}}},
    {"least", "--timeout-min 20", {{"minTimeout", 20}}},
    {"greatest", "--timeout-max 4000", {{"maxTimeout", 4000}}},
    {"both",
     "--timeout-min 600 --timeout-max 700",
     {{"timeout", 600}, {"minTimeout", 600}, {"maxTimeout", 700}}},
    {"gap", "--reply-gap 5", {{"replyGap", 5}}},
    {"horizon", "--horizon 2.5", {{"horizon", 2500}, {"maxTimeout", 2500}}},
    {"function8", "--no-function-8", {{"mayMark", 0}}},
    {"probe", "--probe 4000", {{"maxProbePause", 4000}}},
    {"turnaround", "--turnaround 7", {{"turnaround", 7}}},
    {"registers", "--max-registers 60", {{"maxRegisters", 60}}},
    {"direction",
     "--rs485 --rs485-before 10",
     {{"direction", 1}, {"timeout", 510}, {"maxTimeout", 15010}, {"turnaround", 110}}},
};

INSTANTIATE_TEST_SUITE_P(Typed, LineOptionsOfACommand, ::testing::ValuesIn(optionCases),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace

} // namespace dov417
