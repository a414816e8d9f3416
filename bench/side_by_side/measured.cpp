#include "measured.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <iostream>
#include <sstream>
#include <sys/prctl.h>
#include <termios.h>
#include <unistd.h>

#include "protocol/crc.h"

namespace {

void die(const char* what)
{
    std::perror(what);
    std::exit(1);
}

int requestLength(const unsigned char* request, size_t have)
{
    const bool multiple = have >= 7 && (request[1] == 15 || request[1] == 16);
    return multiple ? 9 + request[6] : 8;
}

[[noreturn]] void answerForever(int master, const Job& job)
{
    unsigned char request[512];
    size_t have = 0;
    int turn = 0;
    for (;;) {
        const ssize_t got = read(master, request + have, sizeof(request) - have);
        if (got <= 0) {
            _exit(0);
        }
        have += static_cast<size_t>(got);
        if (have < static_cast<size_t>(requestLength(request, have))) {
            continue;
        }
        have = 0;
        turn ^= job.changing ? 1 : 0;
        const auto reply = answerTo(request, 0x11 * turn);
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
    if (argc < 6) {
        std::cerr << "usage: " << argv[0]
                  << " poll|read|write|plan SIZE unchanged|changed COUNT memory|line [ITEM...]\n";
        std::exit(2);
    }
    return {argv[1],
            std::atoi(argv[2]),
            std::strcmp(argv[3], "changed") == 0,
            std::atoi(argv[4]),
            std::strcmp(argv[5], "line") == 0,
            std::vector<std::string>(argv + 6, argv + argc)};
}

std::vector<std::string> partsOf(const std::string& item)
{
    std::vector<std::string> parts;
    std::istringstream text(item);
    for (std::string part; std::getline(text, part, ':');) {
        parts.push_back(part);
    }
    return parts;
}

std::vector<Request> requestsOf(const Job& job)
{
    std::vector<Request> requests;
    for (const std::string& item : job.items) {
        const std::vector<std::string> parts = partsOf(item);
        requests.push_back(
            {std::stoi(parts.at(0)), std::stoi(parts.at(1)), std::stoi(parts.at(2))});
    }
    return requests.empty() ? std::vector<Request>{{3, 0x500, job.size}} : requests;
}

std::vector<unsigned char> answerTo(const unsigned char* request, int fill)
{
    const int quantity = request[4] * 256 + request[5];
    std::vector<unsigned char> reply(request, request + 6); // the echo of a write
    if (request[1] <= 4) {
        const int bytes = request[1] <= 2 ? (quantity + 7) / 8 : 2 * quantity;
        reply = {request[0], request[1], static_cast<unsigned char>(bytes)};
        reply.resize(reply.size() + static_cast<size_t>(bytes), static_cast<unsigned char>(fill));
    }
    const size_t length = reply.size();
    reply.resize(length + crcSize);
    appendCrc(reply.data(), static_cast<int>(length));
    return reply;
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
