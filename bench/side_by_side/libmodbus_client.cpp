// A libmodbus RTU client, as people write it: one call a request, which hands over the values.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <modbus.h>
#include <vector>

#include "measured.h"

namespace {

void require(bool done)
{
    if (!done) {
        std::cerr << "libmodbus: " << modbus_strerror(errno) << '\n';
        std::exit(1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    const Job job = jobOf(argc, argv);
    const std::string path = startSlave(job);
    modbus_t* line = modbus_new_rtu(path.c_str(), 38400, 'E', 8, 1);
    if (line == nullptr || modbus_set_slave(line, 1) != 0 || modbus_connect(line) != 0) {
        std::cerr << "libmodbus: " << modbus_strerror(errno) << '\n';
        return 1;
    }
    modbus_set_response_timeout(line, 10, 0);
    modbus_set_byte_timeout(line, 10, 0);
    const std::vector<Request> requests = requestsOf(job);
    std::vector<uint16_t> values(128, 0x1234);
    std::vector<uint8_t> bits(2048);
    const bool writes = job.is("write");
    measure(job, [&] {
        if (writes) {
            ++values[0];
            const int done = job.size == 1
                                 ? modbus_write_register(line, 0x500, values[0])
                                 : modbus_write_registers(line, 0x500, job.size, values.data());
            require(done == job.size);
            return;
        }
        for (const Request& each : requests) {
            const int done =
                each.function == 1
                    ? modbus_read_bits(line, each.first, each.count, bits.data())
                    : modbus_read_registers(line, each.first, each.count, values.data());
            require(done == each.count);
        }
    });
    modbus_close(line);
    modbus_free(line);
    return 0;
}
