// The liar's bench, the long form: dov417_late_bench VALUES [FIRST_SEED [KIND]]
//
// Rounds of requests to stations that answer late, each with another seed, until so many values
// have been shown; over a network, on an adapter that hears what it sends (echo), or behind a radio
// modem that sends some replies twice (modem; lump: what comes within some time arrives at once),
// or with coils, writes of several words and bits of words (mixed, mixedmodem; others: another
// program has just written), or polled, with stations that are switched off (probes), or with the
// port away now and then (away), the line closed and opened again by this program or another
// (reopened), on an adapter that hears some of what it sends wrong (garbledecho) or hears it over a
// network (echonetwork), if that is asked for. Prints what there was, and the seeds of the
// rounds that showed what they must not: a wrong or an older value (behind a modem: once a surplus
// has been met, or more than a handful before), a write that was not done as confirmed, or nothing
// of a station that answers.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "late_rounds.h"

namespace {

constexpr int requests = 400; // in a round
constexpr int handful = 20;

bool isGood(const dov417::Tally& tally, bool isModem)
{
    const bool areValuesGood = isModem
                                   ? tally.lies() == tally.beforeDoubt && tally.lies() <= handful
                                   : tally.lies() == 0 && tally.doubts == 0;
    return areValuesGood && tally.silent == 0;
}

const std::map<std::string, dov417::Tally (*)(unsigned, int)> rounds = {
    {"", dov417::playRound},
    {"away", dov417::playAwayRound},
    {"echo", dov417::playEchoRound},
    {"echonetwork", dov417::playEchoNetworkRound},
    {"garbledecho", dov417::playGarbledEchoRound},
    {"lump", dov417::playLumpRound},
    {"mixed", dov417::playMixedRound},
    {"mixedmodem", dov417::playMixedModemRound},
    {"modem", dov417::playModemRound},
    {"network", dov417::playNetworkRound},
    {"others", dov417::playOthersRound},
    {"probes", dov417::playProbeRound},
    {"reopened", dov417::playReopenedRound}};

int usage()
{
    std::fprintf(stderr, "usage: dov417_late_bench VALUES [FIRST_SEED [KIND]]\nkinds:");
    for (const auto& [kind, play] : rounds)
        std::fprintf(stderr, " %s", kind.c_str());
    std::fprintf(stderr, "\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace dov417;
    if (argc < 2)
        return usage();
    const long long values = std::atoll(argv[1]);
    const unsigned first = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1;
    const std::string kind = argc > 3 ? argv[3] : "";
    const bool isModem = kind == "modem" || kind == "lump" || kind == "mixedmodem";
    const auto play = rounds.find(kind);
    if (play == rounds.end())
        return usage();
    Tally all;
    int bad = 0;
    unsigned seed = first;
    for (; all.values < values; ++seed) {
        const Tally tally = play->second(seed, requests);
        if (!isGood(tally, isModem)) {
            ++bad;
            std::printf("seed %u: %s\n", seed, textOf(tally).c_str());
        }
        all.add(tally);
    }
    std::printf("%u seeds, %d of them bad: %s\n", seed - first, bad, textOf(all).c_str());
    return bad == 0 ? 0 : 1;
}
