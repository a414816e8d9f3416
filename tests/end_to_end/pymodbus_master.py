"""A master that nobody here wrote: pymodbus' serial client asks station 1 by every function."""

import sys

from pymodbus.client import ModbusSerialClient

client = ModbusSerialClient(sys.argv[1], baudrate=38400, parity="N", timeout=2)
assert client.connect()
done = [
    client.read_coils(4096, 16, slave=1),
    client.read_holding_registers(1280, 2, slave=1),
    client.write_coil(4096, True, slave=1),
    client.write_register(1281, 9, slave=1),
    client.write_coils(4097, [True, False, True], slave=1),
    client.write_registers(1282, [1, 2], slave=1),
]
assert not any(each.isError() for each in done), done
refused = [client.read_discrete_inputs(0, 8, slave=1), client.read_input_registers(0, 1, slave=1)]
assert all(each.isError() for each in refused), refused
client.close()
