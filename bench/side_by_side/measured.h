// What the three clients of the comparison share: the sizes, a slave that answers from another
// process so that none of its work is counted, and the marked stretch that callgrind counts.
#ifndef DOV417_BENCH_MEASURED_H
#define DOV417_BENCH_MEASURED_H

#include <functional>
#include <string>
#include <vector>

struct Job {
    bool write;
    int registers;
    bool changing; // reads: every reply carries other values than the one before
    int count;     // measured transactions, after as many that are not
    bool line;     // this driver: over the pseudo-terminal too, not only in memory
};

// CLIENT read|write REGISTERS unchanged|changed COUNT [line]
Job jobOf(int argc, char** argv);

// The frame of one request and the reply to it, CRC included. Station 1, register 0x0500 on.
std::vector<unsigned char> readReply(int registers, int fill);
std::vector<unsigned char> writeEcho(int registers);
int requestLength(const Job& job);

// Starts a slave on a pseudo-terminal in a child process; returns the path that the client opens.
// It answers every request of the job's length with the job's reply, without looking at it.
std::string startSlave(const Job& job);

// Runs a transaction `count` times inside the function that callgrind collects, and prints the
// transactions a second and the processor's microseconds a transaction.
void measure(const Job& job, const std::function<void()>& transaction);

#endif
