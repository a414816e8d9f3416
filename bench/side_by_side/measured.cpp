#include "measured.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <iostream>
#include <sys/prctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

void appendCrc(std::vector<unsigned char>& bytes)
{
    unsigned int crc = 0xFFFF;
    for (unsigned char byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1u) != 0 ? (crc >> 1) ^ 0xA001u : crc >> 1;
        }
    }
    bytes.push_back(static_cast<unsigned char>(crc & 0xFFu));
    bytes.push_back(static_cast<unsigned char>(crc >> 8));
}

void die(const char* what)
{
    std::perror(what);
    std::exit(1);
}

[[noreturn]] void answerForever(int master, const Job& job)
{
    const size_t wanted = static_cast<size_t>(requestLength(job));
    unsigned char request[512];
    size_t have = 0;
    int turn = 0;
    for (;;) {
        const ssize_t got = read(master, request + have, sizeof(request) - have);
        if (got <= 0) {
            _exit(0);
        }
        have += static_cast<size_t>(got);
        if (have < wanted) {
            continue;
        }
        have = 0;
        turn ^= job.changing ? 1 : 0;
        const auto reply = job.write ? writeEcho(job.registers) : readReply(job.registers, turn);
        if (write(master, reply.data(), reply.size()) < 0) {
            _exit(0);
        }
    }
}

} // namespace

extern "C" {

// The only function whose instructions count; its name is given to callgrind.
__attribute__((noinline)) void measuredTransaction(const std::function<void()>& transaction)
{
    transaction();
}
}

Job jobOf(int argc, char** argv)
{
    if (argc < 5) {
        std::cerr << "usage: " << argv[0]
                  << " read|write REGISTERS unchanged|changed COUNT [line]\n";
        std::exit(2);
    }
    return {std::strcmp(argv[1], "write") == 0, std::atoi(argv[2]),
            std::strcmp(argv[3], "changed") == 0, std::atoi(argv[4]), argc > 5};
}

std::vector<unsigned char> readReply(int registers, int fill)
{
    std::vector<unsigned char> reply = {1, 3, static_cast<unsigned char>(2 * registers)};
    reply.resize(reply.size() + 2 * static_cast<size_t>(registers),
                 static_cast<unsigned char>(0x11 * fill));
    appendCrc(reply);
    return reply;
}

std::vector<unsigned char> writeEcho(int registers)
{
    std::vector<unsigned char> echo =
        registers == 1
            ? std::vector<unsigned char>{1, 6, 5, 0, 0x12, 0x34}
            : std::vector<unsigned char>{1, 16, 5, 0, 0, static_cast<unsigned char>(registers)};
    appendCrc(echo);
    return echo;
}

int requestLength(const Job& job)
{
    return job.write && job.registers > 1 ? 9 + 2 * job.registers : 8;
}

std::string startSlave(const Job& job)
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
        die("pseudo-terminal");
    }
    const std::string path = ptsname(master);
    const int slave = open(path.c_str(), O_RDWR | O_NOCTTY); // kept open: no hang-up in between
    termios raw = {};
    tcgetattr(slave, &raw);
    cfmakeraw(&raw);
    tcsetattr(slave, TCSANOW, &raw);
    const pid_t child = fork();
    if (child < 0) {
        die("fork");
    }
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(slave);
        answerForever(master, job);
    }
    close(master);
    return path;
}

void measure(const Job& job, const std::function<void()>& transaction)
{
    for (int i = 0; i < job.count; ++i) {
        transaction();
    }
    const auto begun = std::chrono::steady_clock::now();
    const std::clock_t processor = std::clock();
    for (int i = 0; i < job.count; ++i) {
        measuredTransaction(transaction);
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begun;
    const double used = static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC;
    std::cout << job.count / seconds.count() << ' ' << 1e6 * used / job.count << std::endl;
}
