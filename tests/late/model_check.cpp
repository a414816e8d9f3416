#include "model_check.h"

namespace dov417 {

namespace {

const std::vector<LateQuestion> questions = {
    {"read a", 1, false, writtenAddress, 1},        {"read b", 1, false, otherAddress, 1},
    {"read c", 2, false, otherAddress, 1},          {"write a", 1, true, writtenAddress, 1},
    {"probe a", 1, false, writtenAddress, 1, true}, {"probe b", 1, false, otherAddress, 1, true}};
const std::vector<std::size_t> asked = {0, 1, 2, 3};
const std::vector<std::size_t> askedOfProbes = {0, 1, 4, 5};

std::string textOf(const LateEvent& event)
{
    const std::string station = std::to_string(event.index + 1);
    switch (event.kind) {
    case LateEvent::Kind::ask:
        return questions.at(event.index).name;
    case LateEvent::Kind::replyComes:
        return "reply of " + station + " comes";
    case LateEvent::Kind::replyComesAndStays:
        return "reply of " + station + " comes, and once more later";
    case LateEvent::Kind::replyIsLost:
        return "reply of " + station + " is lost";
    case LateEvent::Kind::hearsNoMore:
        return station + " hears no more";
    case LateEvent::Kind::hearsAgain:
        return station + " hears again";
    default:
        return "time passes";
    }
}

std::vector<LateEvent> eventsOf(const LateModel& model, const ModelSettings& settings)
{
    std::vector<LateEvent> events;
    for (const std::size_t i : settings.isProbed ? askedOfProbes : asked)
        events.push_back({LateEvent::Kind::ask, i});
    for (std::size_t station = 0; station < 2; ++station) {
        events.push_back({LateEvent::Kind::replyComes, station});
        if (!settings.echoes)
            events.push_back({LateEvent::Kind::replyIsLost, station});
        if (settings.repliesTwice)
            events.push_back({LateEvent::Kind::replyComesAndStays, station});
    }
    if (settings.echoes) {
        events.push_back({LateEvent::Kind::hearsNoMore, 0});
        events.push_back({LateEvent::Kind::hearsAgain, 0});
    }
    events.push_back({LateEvent::Kind::timePasses, 0});
    std::vector<LateEvent> possible;
    for (const LateEvent& event : events)
        if (model.isPossible(event))
            possible.push_back(event);
    return possible;
}

void explore(const LateModel& model, const ModelSettings& settings, int depth, ModelResult& result)
{
    ++result.states;
    if (!model.wrong().empty()) {
        result.wrong = model.wrong();
        return;
    }
    if (depth == 0) {
        result.goodReplies += model.goodReplies();
        return;
    }
    for (const LateEvent& event : eventsOf(model, settings)) {
        LateModel next = model;
        next.apply(event);
        result.path.push_back(textOf(event));
        explore(next, settings, depth - 1, result);
        if (!result.wrong.empty())
            return;
        result.path.pop_back();
    }
}

std::string textOf(const ModelSettings& settings)
{
    return std::string(settings.diagnostics > 0    ? "echo"
                       : settings.diagnostics == 0 ? "exception to the echo"
                                                   : "no word to the echo") +
           (settings.isTimeoutFixed ? ", fixed time-out" : ", learning time-out") +
           (settings.isShared ? ", shared line" : "") + (settings.refuses ? ", refusal" : "") +
           (settings.dropsWhenAsked ? ", drops its reply" : "") +
           (settings.isProbed ? ", probed" : "") +
           (settings.echoes ? ", on an adapter that echoes" : "") +
           (settings.repliesTwice ? ", behind a modem" : "");
}

enum KindBits {
    fixed = 1,
    shared = 2,
    refusing = 4,
    dropping = 8,
    probed = 16,
    kinds = 32
};

// All kinds that have these bits.
ModelResult checkKinds(const ModelSettings& common, int bits)
{
    ModelResult all;
    all.kinds = 0;
    for (const int diagnostics : {1, 0, -1}) {
        for (int kind = 0; kind < kinds && all.wrong.empty(); ++kind) {
            if ((kind & bits) != bits)
                continue;
            ModelSettings settings = common;
            settings.diagnostics = diagnostics;
            settings.isTimeoutFixed = (kind & fixed) != 0;
            settings.isShared = (kind & shared) != 0;
            settings.refuses = (kind & refusing) != 0;
            settings.dropsWhenAsked = (kind & dropping) != 0;
            settings.isProbed = (kind & probed) != 0;
            const ModelResult result = checkModel(settings);
            ++all.kinds;
            all.states += result.states;
            all.goodReplies += result.goodReplies;
            all.path = result.path;
            if (!result.wrong.empty())
                all.wrong = textOf(settings) + ": " + result.wrong;
        }
    }
    return all;
}

} // namespace

ModelResult checkModel(const ModelSettings& settings)
{
    ModelResult result;
    explore(LateModel(settings, questions), settings, settings.depth, result);
    return result;
}

ModelResult checkEveryKind(int depth)
{
    ModelSettings settings;
    settings.depth = depth;
    return checkKinds(settings, 0);
}

// A line that nobody shares has no such adapter.
ModelResult checkEchoes(int depth)
{
    ModelSettings settings;
    settings.depth = depth;
    settings.echoes = true;
    return checkKinds(settings, shared);
}

ModelResult checkCopies(int depth)
{
    ModelSettings settings;
    settings.depth = depth;
    settings.repliesTwice = settings.judgesWhenWary = true;
    return checkKinds(settings, 0);
}

std::string textOf(const ModelResult& result)
{
    std::string text = std::to_string(result.kinds) + " kinds of stations and lines, " +
                       std::to_string(result.states) + " states, " +
                       std::to_string(result.goodReplies) + " good replies: ";
    text += result.wrong.empty() ? "no path to a wrong value" : result.wrong;
    for (const std::string& event : result.path)
        text += "\n  " + event;
    return text;
}

} // namespace dov417
