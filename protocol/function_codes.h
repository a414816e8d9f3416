// The Modbus functions that this driver uses.
#ifndef DOV417MODBUS_FUNCTION_CODES_H
#define DOV417MODBUS_FUNCTION_CODES_H

enum FunctionCode {
    readCoils = 1,
    readHoldingRegisters = 3,
    writeSingleCoil = 5,
    writeSingleRegister = 6,
    writeMultipleCoils = 15,
    writeMultipleRegisters = 16
};

#endif
