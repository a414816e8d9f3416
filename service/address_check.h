// The editor's questions about one address and about the register types.
#ifndef DOV417MODBUS_ADDRESS_CHECK_H
#define DOV417MODBUS_ADDRESS_CHECK_H

// Does a run of `length` items from `address` lie within lowest..highest? An item takes
// unitBits / 16 of the address range; the sum is made in double precision and cannot overflow.
bool isWithinRange(int address, int length, int lowest, int highest, int unitBits);

#endif
