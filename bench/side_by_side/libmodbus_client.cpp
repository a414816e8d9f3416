// A libmodbus RTU client, as people write it: one call a transaction, no cache.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <modbus.h>
#include <vector>

#include "measured.h"

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
    std::vector<uint16_t> values(128, 0x1234);
    measure(job, [&] {
        const int done = !job.write
                             ? modbus_read_registers(line, 0x500, job.registers, values.data())
                         : job.registers == 1
                             ? modbus_write_register(line, 0x500, 0x1234)
                             : modbus_write_registers(line, 0x500, job.registers, values.data());
        if (done != job.registers) {
            std::cerr << "libmodbus: " << modbus_strerror(errno) << '\n';
            std::exit(1);
        }
    });
    modbus_close(line);
    modbus_free(line);
    return 0;
}
