// A libmodbus client that reads the same requests over and over, as people write it.
// Usage: cycle_client PORT SILENCE_MICROSECONDS SECONDS FUNCTION:FIRST:COUNT...
// Prints the number of transactions.
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <modbus.h>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Request {
    int function = 0;
    int first = 0;
    int count = 0;
};

bool read(modbus_t* line, const Request& request)
{
    static std::vector<uint8_t> bits(2048);
    static std::vector<uint16_t> words(128);
    const int done = request.function == 1
                         ? modbus_read_bits(line, request.first, request.count, bits.data())
                         : modbus_read_registers(line, request.first, request.count, words.data());
    return done == request.count;
}

} // namespace

int main(int argc, char** argv)
{
    using Clock = std::chrono::steady_clock;
    if (argc < 5)
        return 2;
    const std::chrono::microseconds silence(std::atoi(argv[2]));
    const auto end = Clock::now() + std::chrono::seconds(std::atoi(argv[3]));
    std::vector<Request> requests;
    for (int i = 4; i < argc; ++i) {
        Request request;
        if (std::sscanf(argv[i], "%d:%d:%d", &request.function, &request.first, &request.count) !=
            3)
            return 2;
        requests.push_back(request);
    }
    modbus_t* const line = modbus_new_rtu(argv[1], 38400, 'N', 8, 1);
    if (line == nullptr || modbus_set_slave(line, 1) != 0 || modbus_connect(line) != 0) {
        std::fprintf(stderr, "cycle_client: %s\n", modbus_strerror(errno));
        return 1;
    }
    long transactions = 0;
    while (Clock::now() < end)
        for (const Request& request : requests) {
            std::this_thread::sleep_for(silence);
            if (!read(line, request)) {
                std::fprintf(stderr, "cycle_client: %s\n", modbus_strerror(errno));
                return 1;
            }
            ++transactions;
        }
    std::printf("%ld\n", transactions);
    modbus_close(line);
    modbus_free(line);
}
