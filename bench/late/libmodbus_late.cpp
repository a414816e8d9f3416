// A libmodbus client with its error recovery on, as people write it, on a line whose stations
// answer late: libmodbus_late PORT SECONDS. Prints how many values it was given, how many of them
// were another register's, how many of a register that counts up were old, and how often nothing
// came.
#include <algorithm>
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
    // As the tool is asked for: even addresses, which name themselves, and one that counts.
    constexpr int first = 0x500;
    constexpr std::array<std::array<int, 2>, 6> requests = {{{1, first + 100},
                                                             {1, first + 200},
                                                             {1, first + 300},
                                                             {2, first + 100},
                                                             {3, first + 100},
                                                             {1, first + 401}}};
    const auto ownValue = [](const std::array<int, 2>& request) {
        return request[0] << 12 | (request[1] & 0xFFE);
    };
    const auto isOwn = [&](int value) {
        return std::any_of(requests.begin(), requests.end() - 1,
                           [&](const auto& request) { return value == ownValue(request); });
    };
    long long values = 0;
    long long wrong = 0;
    long long old = 0;
    int last = 0; // of the one that counts
    long long timeouts = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(argv[2]));
    while (std::chrono::steady_clock::now() < end) {
        for (const auto& request : requests) {
            std::uint16_t value = 0;
            modbus_set_slave(line, request[0]);
            if (modbus_read_registers(line, request[1], 1, &value) != 1) {
                ++timeouts;
                continue;
            }
            ++values;
            const bool counts = request[1] % 2 != 0;
            if (counts ? isOwn(value) : value != ownValue(request)) {
                ++wrong;
            } else if (counts) {
                old += value < last ? 1 : 0;
                last = std::max<int>(last, value);
            }
        }
    }
    std::cout << values << ' ' << wrong << ' ' << old << ' ' << timeouts << '\n';
    modbus_close(line);
    modbus_free(line);
    return 0;
}
