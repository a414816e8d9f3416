// A slave that nobody here wrote: libmodbus' server with known contents, station 1 on a serial
// port, or any station for Modbus TCP on HOST PORT, one connection after another.
#include <cerrno>
#include <cstdio>
#include <modbus.h>

namespace {

void serve(modbus_t* line, modbus_mapping_t* memory)
{
    for (;;) {
        uint8_t request[MODBUS_TCP_MAX_ADU_LENGTH];
        const int length = modbus_receive(line, request);
        if (length > 0)
            modbus_reply(line, request, length, memory);
        else if (length < 0 && errno == ECONNRESET)
            return;
    }
}

} // namespace

int main(int argc, char** argv)
{
    constexpr int station = 1;
    constexpr int coils = 6144;
    constexpr int registers = 5280;
    if (argc != 2 && argc != 3)
        return 2;
    const bool isTcp = argc == 3;
    modbus_t* const line =
        isTcp ? modbus_new_tcp_pi(argv[1], argv[2]) : modbus_new_rtu(argv[1], 38400, 'N', 8, 1);
    modbus_mapping_t* const memory = modbus_mapping_new(coils, 0, registers, 0);
    int listener = -1;
    if (isTcp && line)
        listener = modbus_tcp_pi_listen(line, 1);
    if (!line || !memory || modbus_set_slave(line, station) != 0 ||
        (isTcp ? listener < 0 : modbus_connect(line) != 0)) {
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
        if (isTcp && modbus_tcp_pi_accept(line, &listener) < 0)
            return 1;
        serve(line, memory);
        modbus_close(line);
        if (!isTcp)
            return 1;
    }
}
