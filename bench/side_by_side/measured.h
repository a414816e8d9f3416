// What the three clients of the comparison share: the jobs, a slave that answers from another
// process so that none of its work is counted, and the marked stretch that callgrind counts.
#ifndef DOV417_BENCH_MEASURED_H
#define DOV417_BENCH_MEASURED_H

#include <functional>
#include <string>
#include <vector>

// One request of a client that plans its requests by hand.
struct Request {
    int function; // 1 or 3
    int first;
    int count; // coils or registers
};

struct Job {
    std::string kind; // read: poll and take the values; poll: leave them in the cache; write; plan
    int size;         // registers, or keys of a plan
    bool changing;    // reads: every reply carries other values than the one before
    int count;        // measured transactions, after as many that are not
    bool line;        // this driver: over the pseudo-terminal too, not only in memory
    std::vector<std::string> items;

    bool is(const char* name) const
    {
        return kind == name;
    }
};

// CLIENT KIND SIZE unchanged|changed COUNT memory|line [ITEM...]. Items: what is read where it is
// not SIZE registers from 0x0500 on: FUNCTION:FIRST:COUNT for a client that plans by hand,
// REGISTER:FIRST:LENGTH for this driver.
Job jobOf(int argc, char** argv);

std::vector<std::string> partsOf(const std::string& item); // of "a:b:c"
std::vector<Request> requestsOf(const Job& job);

// What station 1 answers to a whole request, CRC included. Each value byte is `fill`.
std::vector<unsigned char> answerTo(const unsigned char* request, int fill);

// Starts a slave on a pseudo-terminal in a child process; returns the path that the client opens.
std::string startSlave(const Job& job);

// Runs a transaction `count` times inside the function that callgrind collects, and prints the
// transactions a second and the processor's microseconds a transaction.
void measure(const Job& job, const std::function<void()>& transaction);

#endif
