// A line whose stations answer late, in pieces, spoilt or never, but in the order of their requests
// and each at most once, also behind an adapter that hears what it sends: what the master shows is
// what the station held, and once the stations answer again it shows values again.
#include "host.h"
#include "late_model.h"

namespace {

using dov417::LateEvent;
using dov417::LateModel;
using dov417::LateModelSettings;
using dov417::LateQuestion;

const std::vector<LateQuestion> questions = {
    {"read a", 1, false, dov417::writtenAddress, 1},
    {"write a", 1, true, dov417::writtenAddress, 1},
    {"read b", 1, false, dov417::otherAddress, 1},
    {"read c", 2, false, dov417::otherAddress, 1},
    {"read two of d", 1, false, dov417::otherAddress + 4, 2},
    {"read two of e", 1, false, dov417::otherAddress + 8, 2},
    {"read two of f", 2, false, dov417::otherAddress + 4, 2},
    {"read three of g", 1, false, dov417::otherAddress + 11, 3},
    // Behind all others, so that the corpus keeps its meaning.
    {"probe a", 1, false, dov417::writtenAddress, 1, true},
    {"probe b", 1, false, dov417::otherAddress, 1, true}};

LateModelSettings settingsOf(Script& script)
{
    LateModelSettings settings;
    settings.diagnostics = script.choice(3) - 1;
    const int kind = script.byte();
    settings.isTimeoutFixed = (kind & 1) != 0;
    settings.isShared = (kind & 34) != 0; // only then an adapter is expected
    settings.refuses = (kind & 4) != 0;
    settings.dropsWhenAsked = (kind & 8) != 0;
    settings.mayMark = (kind & 16) == 0;
    settings.echoes = (kind & 32) != 0;
    return settings;
}

LateEvent eventOf(Script& script)
{
    using Kind = LateEvent::Kind;
    struct Choice {
        Kind kind;
        int indices;
        int amount; // for each step of a byte
    };
    // What is frequent on a line stands here more than once.
    static const Choice choices[] = {
        {Kind::ask, 8, 0},           {Kind::ask, 8, 0},           {Kind::ask, 10, 0},
        {Kind::replyComes, 2, 0},    {Kind::replyComes, 2, 0},    {Kind::replyComes, 2, 0},
        {Kind::replyBegins, 2, 1},   {Kind::replyIsSpoilt, 2, 1}, {Kind::replyIsLost, 2, 0},
        {Kind::timePasses, 1, 0},    {Kind::timePasses, 1, 0},    {Kind::timerIsLate, 1, 10},
        {Kind::timerIsLate, 1, 200}, {Kind::timeGoesBy, 1, 1},    {Kind::timeGoesBy, 1, 20},
        {Kind::timeGoesBy, 1, 400}};
    const int byte = script.byte();
    if (byte % 16 == 9 && byte / 16 >= 12) // passing time stands there twice
        return {byte / 16 < 14 ? Kind::hearsNoMore : Kind::hearsAgain,
                static_cast<std::size_t>(byte / 16 % 2)};
    const Choice& choice = choices[byte % 16];
    LateEvent event{choice.kind, static_cast<std::size_t>(byte / 16 % choice.indices), 0};
    if (choice.amount > 0)
        event.amount = script.byte() * choice.amount;
    return event;
}

void apply(LateModel& model, const LateEvent& event)
{
    if (!model.isPossible(event))
        return;
    model.apply(event);
    if (!model.wrong().empty())
        stop(model.wrong());
}

// From now on each request is answered at once.
void requireThatItGoesOn(LateModel& model)
{
    for (const std::size_t station : {0U, 1U})
        apply(model, {LateEvent::Kind::hearsAgain, station});
    const long long before = model.goodReplies();
    for (int i = 0; i < 1000; ++i) {
        if (model.goodReplies() > before + 3)
            return;
        apply(model, {LateEvent::Kind::ask, 0});
        apply(model, {LateEvent::Kind::replyComes, 1});
        apply(model, {LateEvent::Kind::replyComes, 0});
        if (!model.awaitsReply(0) && !model.awaitsReply(1) && model.isAsking())
            apply(model, {LateEvent::Kind::timePasses, 0});
    }
    stop("a station that answers at once is asked again, and shown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Script script(data, size);
    LateModel model(settingsOf(script), questions);
    while (!script.ended())
        apply(model, eventOf(script));
    requireThatItGoesOn(model);
    return 0;
}
