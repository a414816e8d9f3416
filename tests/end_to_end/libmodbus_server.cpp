// A slave that nobody here wrote: libmodbus' RTU server, station 1, with known contents.
#include <cerrno>
#include <cstdio>
#include <modbus.h>

int main(int argc, char** argv)
{
    constexpr int station = 1;
    constexpr int coils = 6144;
    constexpr int registers = 5280;
    if (argc != 2)
        return 2;
    modbus_t* const line = modbus_new_rtu(argv[1], 38400, 'N', 8, 1);
    modbus_mapping_t* const memory = modbus_mapping_new(coils, 0, registers, 0);
    if (!line || !memory || modbus_set_slave(line, station) != 0 || modbus_connect(line) != 0) {
        std::fprintf(stderr, "%s\n", modbus_strerror(errno));
        return 1;
    }
    for (int address = 0; address < coils; ++address)
        memory->tab_bits[address] = address % (2 + station) == 0;
    for (int address = 0; address < registers; ++address)
        memory->tab_registers[address] = static_cast<uint16_t>(address * 7 + station);
    std::puts("ready");
    std::fflush(stdout);
    for (;;) {
        uint8_t request[MODBUS_RTU_MAX_ADU_LENGTH];
        const int length = modbus_receive(line, request);
        if (length > 0)
            modbus_reply(line, request, length, memory);
    }
}
