// What the polling clients of bench/side-by-side share: the same requests over and over for a time.
#ifndef DOV417_BENCH_CYCLE_H
#define DOV417_BENCH_CYCLE_H

#include <functional>
#include <vector>

struct Request {
    int function = 0; // 1 reads coils, 3 registers
    int first = 0;
    int count = 0;
};

struct Cycle {
    const char* port = nullptr;
    int delay = 0; // microseconds before each request; whoever keeps it by itself ignores it
    int seconds = 0;
    std::vector<Request> requests;
};

// PORT DELAY SECONDS FUNCTION:FIRST:COUNT...; ends the program when it is anything else.
Cycle cycleOf(int argc, char** argv);

// Runs the requests until the time is over and prints the transactions a second. `read` ends the
// program when one fails.
void runCycle(const Cycle& cycle, const std::function<void(const Request&)>& read);

#endif
