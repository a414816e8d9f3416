// A libmodbus client that reads the same requests over and over, as people write it.
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <modbus.h>
#include <thread>

#include "cycle.h"

namespace {

[[noreturn]] void die()
{
    std::fprintf(stderr, "libmodbus: %s\n", modbus_strerror(errno));
    std::exit(1);
}

} // namespace

int main(int argc, char** argv)
{
    const Cycle cycle = cycleOf(argc, argv);
    modbus_t* const line = modbus_new_rtu(cycle.port, 38400, 'N', 8, 1);
    if (line == nullptr || modbus_set_slave(line, 1) != 0 || modbus_connect(line) != 0)
        die();
    std::vector<uint8_t> bits(2048);
    std::vector<uint16_t> words(128);
    runCycle(cycle, [&](const Request& request) {
        std::this_thread::sleep_for(std::chrono::microseconds(cycle.delay));
        const int done =
            request.function == 1
                ? modbus_read_bits(line, request.first, request.count, bits.data())
                : modbus_read_registers(line, request.first, request.count, words.data());
        if (done != request.count)
            die();
    });
    modbus_close(line);
    modbus_free(line);
    return 0;
}
