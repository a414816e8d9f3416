// CRC-16/MODBUS: polynomial 0x8005 reflected (0xA001), start 0xFFFF, sent low byte first.
#ifndef DOV417MODBUS_CRC_H
#define DOV417MODBUS_CRC_H

enum {
    crcSize = 2
};

unsigned short computate_check(unsigned char* data, unsigned short length);

// The same over const bytes of any length: a reply may be longer than 65535 bytes.
unsigned short crcOf(const unsigned char* data, int length);

// Stores the CRC of a frame, bytes[0 .. length - 1], low byte first at bytes[length].
void appendCrc(unsigned char* bytes, int length);

#endif
