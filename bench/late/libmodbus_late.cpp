// A libmodbus client with its error recovery on, as people write it, on a line whose stations
// answer late: libmodbus_late PORT SECONDS. Prints how many values it was given, how many of them
// were another register's, and how often nothing came.
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <modbus.h>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    modbus_t* const line = modbus_new_rtu(argv[1], 38400, 'N', 8, 1);
    if (line == nullptr || modbus_connect(line) != 0) {
        std::cerr << "libmodbus: " << modbus_strerror(errno) << '\n';
        return 1;
    }
    modbus_set_error_recovery(line,
                              static_cast<modbus_error_recovery_mode>(
                                  MODBUS_ERROR_RECOVERY_LINK | MODBUS_ERROR_RECOVERY_PROTOCOL));
    modbus_set_response_timeout(line, 0, 500000);
    // As the tool is asked for: even addresses, which name themselves.
    constexpr int first = 0x500;
    constexpr std::array<std::array<int, 2>, 5> requests = {
        {{1, first + 100}, {1, first + 200}, {1, first + 300}, {2, first + 100}, {3, first + 100}}};
    long long values = 0;
    long long wrong = 0;
    long long timeouts = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(argv[2]));
    while (std::chrono::steady_clock::now() < end) {
        for (const auto& [station, address] : requests) {
            std::uint16_t value = 0;
            modbus_set_slave(line, station);
            if (modbus_read_registers(line, address, 1, &value) == 1) {
                ++values;
                wrong += value == (station << 12 | (address & 0xFFE)) ? 0 : 1;
            } else {
                ++timeouts;
            }
        }
    }
    std::cout << values << ' ' << wrong << ' ' << timeouts << '\n';
    modbus_close(line);
    modbus_free(line);
    return 0;
}
