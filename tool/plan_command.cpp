#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>

#include "driver/registers.h"
#include "line/counted.h"
#include "line/failure.h"
#include "line/frame_text.h"
#include "session/items.h"
#include "session/planning.h"
#include "tool/defaults.h"
#include "tool/json_output.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;

struct PlanOptions {
    LineOptions line;
    ItemOptions items;
    int responseMs = 0; // --response-time
    bool json = false;
};

double milliseconds(std::chrono::duration<double, std::milli> time)
{
    return time.count();
}

// The words of a stretch, under the word type's name where bits or double words were asked for.
std::string wordsText(int station, const std::string& regName, int first, int words)
{
    return std::to_string(station) + "/" + regName + ":" + std::to_string(first) +
           (words > 1 ? ".." + std::to_string(first + words - 1) : "");
}

std::string wordsText(const Stretch& stretch)
{
    const std::string area = areaOf(stretch.regName);
    const std::string name = area == stretch.regName ? area : area + "_W";
    return wordsText(stretch.station, name, stretch.first, stretch.count);
}

void printLine(const SerialFormat& wire, microseconds responseTime)
{
    std::printf(
        "line %s: %d bits a character, %.3f ms; inter-frame delay %.3f ms; response time %.3f ms\n",
        toText(wire).c_str(), wire.bitsPerCharacter(), milliseconds(wire.characters(1)),
        milliseconds(wire.interFrameDelay()), milliseconds(responseTime));
}

void printPlan(const Plan& plan, int gap)
{
    std::printf("gap %d: %s, cycle %.2f ms\n\n", gap,
                counted(static_cast<int>(plan.requests.size()), "request").c_str(),
                milliseconds(plan.cycle));
    std::printf("%3s  %-18s  %-24s  %9s  %10s\n", "", "request", "bytes", "reply", "time");
    int number = 0;
    for (const PlannedRequest& request : plan.requests) {
        const std::string words =
            wordsText(request.station, request.regName, request.address, request.length);
        if (request.parts.empty()) {
            std::printf("%3d  %-18s  %-24s  %3d bytes  %7.2f ms\n", ++number, words.c_str(),
                        hexText(request.bytes).c_str(), request.replyLength,
                        milliseconds(request.time));
            continue;
        }
        const std::string parts = "in " + counted(static_cast<int>(request.parts.size()), "part");
        std::printf("%3d  %-18s  %-24s  %9s  %7.2f ms\n", ++number, words.c_str(), parts.c_str(),
                    "", milliseconds(request.time));
        for (const PlannedPart& part : request.parts)
            std::printf(
                "       %-16s  %-24s  %3d bytes  %7.2f ms\n",
                wordsText(request.station, request.regName, part.address, part.length).c_str(),
                hexText(part.bytes).c_str(), part.replyLength, milliseconds(part.time));
    }
}

std::vector<std::string> warningsOf(const Library& library, const Planner& planner,
                                    const Plan& plan, const std::vector<Item>& items,
                                    const LineSetup& line)
{
    std::vector<std::string> warnings;
    for (std::size_t i = 0; i < plan.requests.size(); ++i) {
        const PlannedRequest& request = plan.requests[i];
        const std::string name = "request " + std::to_string(i + 1);
        const auto own = line.stationMaxRegisters.find(request.station);
        const std::optional<int> maximum =
            own == line.stationMaxRegisters.end() ? line.maxRegisters : own->second;
        const bool isOfCoils = request.coils() > 0;
        if (maximum && request.length > *maximum && request.parts.empty())
            warnings.push_back(name +
                               " goes out as it is: its values of several words overlap, and no "
                               "part of at most " +
                               std::to_string(*maximum) + " registers ends between them");
        else if (request.isAboveLimit())
            warnings.push_back(name + " asks for " +
                               (isOfCoils ? std::to_string(request.coils()) + " coils"
                                          : std::to_string(request.maxWords()) + " registers") +
                               "; a strict controller answers at most " +
                               std::to_string(isOfCoils ? maxCoils : maxWordsOfARead) +
                               " and refuses it with exception 3: see --max-registers");
    }
    for (const Stretch& stretch : planner.uncovered(plan))
        warnings.push_back("no request reads " + wordsText(stretch) +
                           ": a shorter address lies inside a longer one that was cut; name the "
                           "longer one in pieces of at most 128 words");
    for (const Stretch& value : planner.divided(plan))
        warnings.push_back("two requests read the " + std::to_string(value.count * 16) +
                           "-bit value at " +
                           wordsText(value.station, value.regName, value.first, value.count) +
                           ": its words are not of one moment");
    try {
        requireUntornValues(library, items, line.mergeGap());
    } catch (const UsageFailure& failure) {
        warnings.push_back(std::string("writing: ") + failure.what());
    }
    return warnings;
}

OutputJson requestJson(const PlannedRequest& request)
{
    OutputJson object = {
        {"words", wordsText(request.station, request.regName, request.address, request.length)},
        {"bytes", hexText(request.bytes)},
        {"replyBytes", request.replyLength},
        {"milliseconds", milliseconds(request.time)}};
    for (const PlannedPart& part : request.parts)
        object["parts"].push_back(
            {{"words", wordsText(request.station, request.regName, part.address, part.length)},
             {"bytes", hexText(part.bytes)},
             {"replyBytes", part.replyLength},
             {"milliseconds", milliseconds(part.time)}});
    return object;
}

OutputJson outcomesJson(const std::vector<GapOutcome>& outcomes)
{
    const int best = bestOutcome(outcomes);
    OutputJson list = OutputJson::array();
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const GapOutcome& outcome = outcomes[i];
        list.push_back(
            {{"firstGap", outcome.firstGap},
             {"lastGap", outcome.lastGap < 0 ? OutputJson() : OutputJson(outcome.lastGap)},
             {"requests", outcome.requests},
             {"cycle", milliseconds(outcome.cycle)},
             {"aboveLimit", outcome.aboveLimit},
             {"wordsNotRead", outcome.uncoveredWords},
             {"best", static_cast<int>(i) == best}});
    }
    return list;
}

std::string gapText(const GapOutcome& outcome)
{
    const std::string first = std::to_string(outcome.firstGap);
    if (outcome.lastGap < 0)
        return first + " and more";
    return outcome.lastGap == outcome.firstGap ? first
                                               : first + ".." + std::to_string(outcome.lastGap);
}

void printOutcomes(const std::vector<GapOutcome>& outcomes)
{
    const int best = bestOutcome(outcomes);
    std::printf("\n%-12s  %8s  %11s\n", "gap", "requests", "cycle");
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const GapOutcome& outcome = outcomes[i];
        std::string notes;
        if (static_cast<int>(i) == best)
            notes += "  best";
        if (outcome.aboveLimit > 0)
            notes += "  " + std::to_string(outcome.aboveLimit) + " above the limit";
        if (outcome.uncoveredWords > 0)
            notes += "  " + counted(outcome.uncoveredWords, "word") + " not read";
        std::printf("%-12s  %8d  %8.2f ms%s\n", gapText(outcome).c_str(), outcome.requests,
                    milliseconds(outcome.cycle), notes.c_str());
    }
}

int runPlan(const PlanOptions& options)
{
    const Library library(options.line.library);
    const SerialFormat wire = serialFormat(library, options.line);
    const microseconds responseTime = std::chrono::milliseconds(options.responseMs);
    const std::vector<Item> items =
        Items(library, options.items.source).chosen(options.items.arguments, Access::read);
    const std::vector<Address> addresses = addressesOf(items);

    const Planner planner(library, addresses, wire, responseTime,
                          options.line.maxRegisters.value_or(noMaximum),
                          options.line.stationMaxRegisters);
    const int gap = options.line.mergeGap();
    const Plan plan = planner.plan(gap);
    const std::vector<std::string> warnings =
        warningsOf(library, planner, plan, items, options.line);
    if (options.json) {
        OutputJson object = {{"line", toText(wire)},
                             {"bitsPerCharacter", wire.bitsPerCharacter()},
                             {"characterTime", milliseconds(wire.characters(1))},
                             {"interFrameDelay", milliseconds(wire.interFrameDelay())},
                             {"responseTime", milliseconds(responseTime)},
                             {"gap", gap},
                             {"cycle", milliseconds(plan.cycle)},
                             {"requests", OutputJson::array()},
                             {"warnings", warnings}};
        for (const PlannedRequest& request : plan.requests)
            object["requests"].push_back(requestJson(request));
        if (!options.line.gap)
            object["gaps"] = outcomesJson(planner.outcomes());
        sayJson(object);
        return exitDone;
    }
    printLine(wire, responseTime);
    printPlan(plan, gap);
    for (const std::string& warning : warnings)
        std::printf("! %s\n", warning.c_str());
    if (!options.line.gap)
        printOutcomes(planner.outcomes());
    return exitDone;
}

} // namespace

void addPlanCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<PlanOptions>();
    CLI::App* command =
        app.add_subcommand("plan", "What the driver will send for these addresses, and how long a "
                                   "cycle takes on the wire");
    addAddressArguments(*command, options->items);
    command
        ->add_option("--response-time", options->responseMs,
                     "What a controller takes before it answers (0)")
        ->option_text("MS")
        ->check(CLI::Range(0, maxMs));
    addJsonFlag(*command, chosen, options->json);
    addPlanningOptions(*command, options->line);
    addDefaults(*command, {&options->line, &options->items.source.tags}, chosen);
    command->footer(
        "Examples:\n"
        "  dov417 plan R_W:100..107 R_W:120 M_bit:1.0..1.15 2/R_D:10..13\n"
        "  dov417 plan R_W:100 R_W:115 --line 9600,8,NONE,1 --response-time 5\n"
        "  dov417 plan R_W:100 R_W:115 --gap 10\n"
        "  dov417 plan R_W:0..127 --max-registers 60\n"
        "A read carries its characters, an inter-frame delay before it and one before its\n"
        "reply, and the controller's response time. Without --gap the cycle time of every gap\n"
        "is listed too.");
    command->callback([options, &chosen]() { chosen = [options]() { return runPlan(*options); }; });
}

} // namespace dov417
