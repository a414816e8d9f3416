#include "cycle.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

Cycle cycleOf(int argc, char** argv)
{
    Cycle cycle;
    bool understood = argc > 4;
    for (int i = 4; i < argc; ++i) {
        Request request;
        understood = understood && std::sscanf(argv[i], "%d:%d:%d", &request.function,
                                               &request.first, &request.count) == 3;
        cycle.requests.push_back(request);
    }
    if (!understood) {
        std::fprintf(stderr, "usage: %s PORT DELAY SECONDS FUNCTION:FIRST:COUNT...\n", argv[0]);
        std::exit(2);
    }
    cycle.port = argv[1];
    cycle.delay = std::atoi(argv[2]);
    cycle.seconds = std::atoi(argv[3]);
    return cycle;
}

void runCycle(const Cycle& cycle, const std::function<void(const Request&)>& read)
{
    using Clock = std::chrono::steady_clock;
    const auto begun = Clock::now();
    std::chrono::duration<double> elapsed = {};
    long transactions = 0;
    for (; elapsed.count() < cycle.seconds; elapsed = Clock::now() - begun) {
        for (const Request& request : cycle.requests) {
            read(request);
            ++transactions;
        }
    }
    std::printf("%f\n", static_cast<double>(transactions) / elapsed.count());
}
