"""A slave that nobody here wrote: pymodbus' server with known contents, on a serial port, or for
Modbus TCP on "HOST:PORT"."""

import asyncio
import sys

from pymodbus.datastore import ModbusSequentialDataBlock, ModbusServerContext, ModbusSlaveContext
from pymodbus.server.async_io import ModbusSerialServer, ModbusTcpServer

COILS = 6144
REGISTERS = 5280


def station(number):
    return ModbusSlaveContext(
        co=ModbusSequentialDataBlock(0, [a % (2 + number) == 0 for a in range(COILS)]),
        hr=ModbusSequentialDataBlock(0, [(a * 7 + number) % 65536 for a in range(REGISTERS)]),
        zero_mode=True,
    )


async def serve(port):
    context = ModbusServerContext(slaves={1: station(1), 2: station(2)}, single=False)
    if port.startswith("/"):
        server = ModbusSerialServer(context, port=port, baudrate=38400, ignore_missing_slaves=True)
        await server.start()
        print("ready", flush=True)
        await server.serve_forever()
    else:
        host, number = port.rsplit(":", 1)
        server = ModbusTcpServer(
            context, address=(host, int(number)), ignore_missing_slaves=True, allow_reuse_address=True
        )
        serving = asyncio.ensure_future(server.serve_forever())
        await server.serving
        print("ready", flush=True)
        await serving


asyncio.run(serve(sys.argv[1]))
