#include "protocol/frame_building.h"

#include <algorithm>
#include <cstring>

#include "protocol/address_text.h"
#include "protocol/byte_conversion.h"
#include "protocol/crc.h"
#include "protocol/function_codes.h"
#include "protocol/record_copy.h"
#include "protocol/register_table.h"
#include "protocol/wrap.h"

namespace {

enum {
    broadcastStation = 0,
    headerSize = 6,                // station, function, start or address (2), quantity or value (2)
    byteCountAt = 6,               // of a multiple write, before its payload
    payloadAt = 7,                 // of a multiple write
    readPayloadAt = 3,             // of a read reply: station, function, byte count
    readReplyOverhead = 5,         // station, function, byte count, CRC
    echoSize = 8,                  // every write is answered by eight bytes
    maxWriteBits = recordDataSize, // a request has one data byte a bit
    coilsPerWord = 16
};

void putWord(unsigned char* bytes, int value) // high byte first, low 16 bits
{
    bytes[0] = static_cast<unsigned char>((static_cast<unsigned int>(value) >> 8) & 0xFFu);
    bytes[1] = static_cast<unsigned char>(static_cast<unsigned int>(value) & 0xFFu);
}

const FRAME_PRO blankFrame = FRAME_PRO();

// A frame record at the end of the list, zeroed but for its request.
FRAME_PRO& appendBlank(QList<FRAME_PRO>& frames)
{
    if (!isReserved(frames)) {
        frames.append(blankFrame);
        return frames.last();
    }
    FRAME_PRO& made = frames[0];
    memset(made.frame, 0,
           static_cast<size_t>(-1 - made.sendLength)); // the bytes after these are zero
    made.sendLength = 0;
    made.replyLength = 0;
    made.dataPosition = 0;
    made.dataCount = 0;
    made.spare = 0;
    return made;
}

// The same with its request and its first six bytes.
FRAME_PRO& appendFrame(QList<FRAME_PRO>& frames, const VARIABLE& request, FunctionCode function,
                       int start, int quantity, bool valuesAreThere = false)
{
    FRAME_PRO& made = appendBlank(frames);
    if (valuesAreThere) {
        assignTarget(made.request, request);
    } else {
        assignRequest(made.request, request);
    }
    made.frame[0] =
        static_cast<unsigned char>(static_cast<unsigned int>(request.stationNo) & 0xFFu);
    made.frame[1] = static_cast<unsigned char>(function);
    putWord(made.frame + 2, start);
    putWord(made.frame + 4, quantity);
    return made;
}

void finishFrame(FRAME_PRO& made, int payloadEnd)
{
    appendCrc(made.frame, payloadEnd);
    made.sendLength = payloadEnd + crcSize;
}

// 5 + 2n: station, function, byte count, n registers (or 16n coils), CRC.
FRAME_PRO& appendRead(QList<FRAME_PRO>& frames, const VARIABLE& request, FunctionCode function,
                      int start, int quantity, int words, bool valuesAreThere = false)
{
    FRAME_PRO& made = appendFrame(frames, request, function, start, quantity, valuesAreThere);
    finishFrame(made, headerSize);
    made.replyLength = wrapAdd(readReplyOverhead, wrapMul(2, words));
    made.dataPosition = readPayloadAt;
    return made;
}

void finishWrite(FRAME_PRO& made, int payloadEnd)
{
    finishFrame(made, payloadEnd);
    made.replyLength = made.request.stationNo == broadcastStation ? 0 : echoSize;
}

FRAME_PRO& appendMultipleWrite(QList<FRAME_PRO>& frames, const VARIABLE& request,
                               FunctionCode function, int start, int quantity, int payloadBytes)
{
    FRAME_PRO& made = appendFrame(frames, request, function, start, quantity);
    made.frame[byteCountAt] =
        static_cast<unsigned char>(static_cast<unsigned int>(payloadBytes) & 0xFFu);
    return made;
}

void writeOneCoil(QList<FRAME_PRO>& frames, const VARIABLE& request, const RegisterType& type)
{
    FRAME_PRO& made =
        appendFrame(frames, request, writeSingleCoil, wrapAdd(type.baseAddress, request.address),
                    request.data[0] == 1 ? 0xFF00 : 0x0000);
    finishWrite(made, headerSize);
}

// Goes out by its bit number alone, without the base address of its area, unlike every other frame:
// a run of "Q_bit" or "M_bit" changes coils of I. Hosts are told to write such bits one at a time.
void writeCoilRun(QList<FRAME_PRO>& frames, const VARIABLE& request)
{
    if (request.length > maxWriteBits) {
        return;
    }
    const int bytes = (request.length + 7) / 8;
    FRAME_PRO& made = appendMultipleWrite(frames, request, writeMultipleCoils, request.address,
                                          request.length, bytes);
    for (int bit = 0; bit < request.length; ++bit) {
        unsigned char& packed = made.frame[payloadAt + bit / 8];
        packed = static_cast<unsigned char>(packed + (request.data[bit] << (bit % 8)));
    }
    finishWrite(made, payloadAt + bytes);
}

// The first coil of a word is its bit 0, so words go out low byte first, as they are kept.
void writeCoilWords(QList<FRAME_PRO>& frames, const VARIABLE& request, const RegisterType& type)
{
    if (request.length > maxFrameWords) {
        return;
    }
    const int bytes = 2 * request.length;
    FRAME_PRO& made =
        appendMultipleWrite(frames, request, writeMultipleCoils,
                            wrapAdd(type.baseAddress, wrapMul(coilsPerWord, request.address)),
                            coilsPerWord * request.length, bytes);
    for (int i = 0; i < bytes; ++i) {
        made.frame[payloadAt + i] = request.data[i];
    }
    finishWrite(made, payloadAt + bytes);
}

void writeOneRegister(QList<FRAME_PRO>& frames, const VARIABLE& request, const RegisterType& type)
{
    FRAME_PRO& made = appendFrame(frames, request, writeSingleRegister,
                                  wrapAdd(type.baseAddress, request.address),
                                  uchar2int16(request.data[0], request.data[1]));
    finishWrite(made, headerSize);
}

// Each register high byte first. A 32-bit value sends its low-order register first, which is the
// order of its words in the request.
FRAME_PRO& appendRegisterWrite(QList<FRAME_PRO>& frames, const VARIABLE& request, int start,
                               int words)
{
    FRAME_PRO& made =
        appendMultipleWrite(frames, request, writeMultipleRegisters, start, words, 2 * words);
    const unsigned char* word = request.data;
    unsigned char* out = made.frame + payloadAt;
    for (int i = 0; i < words; ++i, word += 2, out += 2) {
        out[0] = word[1];
        out[1] = word[0];
    }
    finishWrite(made, payloadAt + 2 * words);
    return made;
}

// The slave knows whole registers only: read them, and write them back with the requested bits
// changed once the reply is in. The write back holds no register contents until then.
void writeRegisterBits(QList<FRAME_PRO>& frames, const VARIABLE& request, const RegisterType& type)
{
    if (request.stationNo == broadcastStation || request.length > maxWriteBits) {
        return;
    }
    const int firstBit = request.address % 16;
    const int words = (firstBit + request.length + 15) / 16;
    const int start = wrapAdd(type.baseAddress, request.address / 16);
    FRAME_PRO& read = appendRead(frames, request, readHoldingRegisters, start, words, words);
    read.dataCount = 2 * words; // bytes: that much is copied into the write back
    appendRegisterWrite(frames, request, start, words).dataPosition = payloadAt;
}

} // namespace

void reserveFrame(FRAME_PRO& frame)
{
    const int used = frame.sendLength < 0 ? recordDataSize : frame.sendLength;
    frame.sendLength = -1 - std::min<int>(used, recordDataSize);
}

bool isReserved(const QList<FRAME_PRO>& frames)
{
    return frames.size() == 1 && frames.at(0).sendLength < 0;
}

int frameRead(const VARIABLE& request, QList<FRAME_PRO>& frames, bool valuesAreThere)
{
    const int index = indexOfName(request.regName);
    if (index < 0 || request.stationNo == broadcastStation) {
        return 0;
    }
    const RegisterType& type = registerType(index);
    const bool coils = type.functionCode == readCoils;
    const int unit = coils ? coilsPerWord : 1;
    appendRead(frames, request, coils ? readCoils : readHoldingRegisters,
               wrapAdd(type.baseAddress, wrapMul(unit, request.address)),
               wrapMul(unit, request.length), request.length, valuesAreThere)
        .dataCount = request.length;
    return 1;
}

void frameWrite(const VARIABLE& request, QList<FRAME_PRO>& frames)
{
    const int index = indexOfName(request.regName);
    if (index < 0 || request.length < 0) {
        return;
    }
    const RegisterType& type = registerType(index);
    const bool coils = type.functionCode == readCoils;
    const bool single = request.length == 1;
    if (coils && type.bitNamed) {
        single ? writeOneCoil(frames, request, type) : writeCoilRun(frames, request);
    } else if (coils) {
        writeCoilWords(frames, request, type);
    } else if (type.bitNamed) {
        writeRegisterBits(frames, request, type);
    } else if (single) {
        writeOneRegister(frames, request, type);
    } else if (request.length <= maxFrameWords) {
        appendRegisterWrite(frames, request, wrapAdd(type.baseAddress, request.address),
                            request.length);
    }
}

void frameHandshake(QList<FRAME_PRO>& frames)
{
    assignRequest(appendBlank(frames).request, blankFrame.request);
}

void patchWriteBack(FRAME_PRO& writeBack, const QByteArray& reply, int count, int position,
                    const VARIABLE& request)
{
    if (count < 0 || position < 0 || position + static_cast<long long>(count) > reply.size() ||
        writeBack.dataPosition < 0 || writeBack.sendLength > recordDataSize ||
        writeBack.dataPosition + static_cast<long long>(count) > writeBack.sendLength - crcSize) {
        return;
    }
    unsigned char* registers = writeBack.frame + writeBack.dataPosition;
    memcpy(registers, reply.constData() + position, static_cast<size_t>(count));
    swapBytesOfWords(registers, count / 2);
    const int first = request.address % 16;
    for (int i = 0; i < request.length && i < recordDataSize; ++i) {
        const int bit = first + i;
        if (bit >= 0 && bit / 8 < count) {
            registers[bit / 8] = static_cast<unsigned char>(
                _setBitValue(registers[bit / 8], bit % 8, request.data[i]));
        }
    }
    swapBytesOfWords(registers, count / 2);
    appendCrc(writeBack.frame, writeBack.sendLength - crcSize);
}
