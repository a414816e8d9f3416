// The liar's bench, the long form: dov417_late_bench VALUES [FIRST_SEED]
//
// Rounds of requests to stations that answer late, each with another seed, until so many values
// have been shown. Fails if one of them was wrong, names its seed, and prints what there was.
#include <cstdio>
#include <cstdlib>

#include "late_rounds.h"

int main(int argc, char** argv)
{
    using namespace dov417;
    if (argc < 2) {
        std::fprintf(stderr, "usage: dov417_late_bench VALUES [FIRST_SEED]\n");
        return 2;
    }
    const long long values = std::atoll(argv[1]);
    const unsigned first = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1;
    constexpr int requests = 400;
    Tally all;
    unsigned seed = first;
    for (; all.values < values; ++seed) {
        const Tally tally = playRound(seed, requests);
        if (tally.lies() > 0 || tally.silent > 0)
            std::printf("seed %u: %s\n", seed, textOf(tally).c_str());
        all.add(tally);
    }
    std::printf("%u seeds: %s\n", seed - first, textOf(all).c_str());
    return all.lies() == 0 && all.silent == 0 ? 0 : 1;
}
