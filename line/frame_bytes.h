// The bytes of a Modbus RTU frame: station, function, what the function asks for, CRC.
#ifndef DOV417_LINE_FRAME_BYTES_H
#define DOV417_LINE_FRAME_BYTES_H

#include <QByteArray>

namespace dov417 {

constexpr int functionIndex = 1;
constexpr int addressIndex = 2;
constexpr int quantityIndex = 4;
constexpr int exceptionCodeIndex = 2; // of a reply that is an exception
constexpr int addressEnd = quantityIndex;
constexpr int crcLength = 2;
constexpr int minFrameLength = 4;   // station, function, CRC
constexpr int exceptionLength = 5;  // station, function, code, CRC
constexpr int exceptionFlag = 0x80; // in the function of a reply
constexpr int illegalFunction = 1;  // exception codes
constexpr int illegalAddress = 2;
constexpr int illegalValue = 3;         // of the quantity, too: more than the station takes at once
constexpr int noPathBehindGateway = 10; // those that no station sends itself
constexpr int noAnswerBehindGateway = 11;
constexpr unsigned char broadcastStation = 0; // nobody answers it
constexpr int maxStation = 247;
constexpr int maxFrameLength = 265; // a write of 256 bytes of data
constexpr int bytesPerWord = 2;
constexpr int bitsPerWord = 16; // the coils that one register would hold

enum ModbusFunction {
    readCoils = 1,
    readInputs = 2,
    readRegisters = 3,
    readInputRegisters = 4,
    writeCoil = 5,
    writeRegister = 6,
    diagnostics = 8, // sub-function 0 sends back what it was sent
    writeCoils = 15,
    writeRegisters = 16
};

inline int byteAt(const QByteArray& bytes, int index)
{
    return static_cast<unsigned char>(bytes.at(index));
}

inline int wordAt(const QByteArray& bytes, int index)
{
    return byteAt(bytes, index) * 256 + byteAt(bytes, index + 1);
}

// Does a gateway say this in the place of a station that does not answer it?
inline bool isOfGateway(int exceptionCode)
{
    return exceptionCode == noPathBehindGateway || exceptionCode == noAnswerBehindGateway;
}

inline void appendWord(QByteArray& bytes, int word)
{
    bytes.append(static_cast<char>(word >> 8 & 0xFF)).append(static_cast<char>(word & 0xFF));
}

inline unsigned char stationOf(const QByteArray& frame)
{
    return static_cast<unsigned char>(frame.at(0));
}

// That of an exception is the function that was asked for.
inline int functionOf(const QByteArray& frame)
{
    return byteAt(frame, functionIndex) & ~exceptionFlag;
}

inline bool isReadFunction(int function)
{
    return function >= readCoils && function <= readInputRegisters;
}

inline bool isCoils(int function)
{
    return function == readCoils || function == writeCoil || function == writeCoils;
}

inline bool holdsBits(int function)
{
    return isCoils(function) || function == readInputs;
}

// So many coils, inputs or registers take in a frame.
inline int bytesFor(int function, int count)
{
    return holdsBits(function) ? (count + 7) / 8 : 2 * count;
}

} // namespace dov417

#endif
