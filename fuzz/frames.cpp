// Frame building against an independent reader of frames, and the CRC against one made bit by bit.
#include "host.h"
#include "link/send_scheduling.h"
#include "protocol/crc.h"
#include "uncalled_functions.h"

namespace {

enum {
    readCoils = 1,
    readRegisters = 3,
    writeCoil = 5,
    writeRegister = 6,
    writeCoils = 15,
    writeRegisters = 16
};

// A request frame as a slave reads it from the line.
struct ReadFrame {
    explicit ReadFrame(const FRAME_PRO& frame)
        : bytes(frame.frame), size(frame.sendLength), station(bytes[0]), function(bytes[1]),
          start(bytes[2] * 256 + bytes[3]), quantity(bytes[4] * 256 + bytes[5])
    {
        require(size >= 8 && size <= 1024, "a frame has 8 to 1024 bytes");
        const unsigned int crc = bitwiseCrc(bytes, size - 2);
        require(bytes[size - 2] == (crc & 0xFFu) && bytes[size - 1] == crc >> 8,
                "a frame ends with its CRC, low byte first");
        for (int i = size; i < 1024; ++i) {
            require(bytes[i] == 0, "nothing stands behind a frame");
        }
    }

    int registerAt(int i) const
    {
        return bytes[7 + 2 * i] * 256 + bytes[8 + 2 * i];
    }
    int coilAt(int i) const
    {
        return bytes[7 + i / 8] >> (i % 8) & 1;
    }

    const unsigned char* bytes;
    int size;
    int station;
    int function;
    int start;
    int quantity;
};

int low16(long long value)
{
    return static_cast<int>(static_cast<unsigned long long>(value) & 0xFFFFu);
}

int hostWord(const VARIABLE& request, int i)
{
    return request.data[2 * i] + 256 * request.data[2 * i + 1];
}

void requireCommon(const FRAME_PRO& frame, const ReadFrame& read, const VARIABLE& request)
{
    require(read.station == (request.stationNo & 0xFF), "the station is the request's");
    require(frame.request.address == request.address && frame.request.length == request.length &&
                frame.request.regName == request.regName && frame.request.kind == request.kind &&
                frame.request.stationNo == request.stationNo,
            "the frame carries its request");
    require(frame.spare == 0, "the spare field is 0");
}

void requireEcho(const FRAME_PRO& frame, const VARIABLE& request)
{
    require(frame.replyLength == (request.stationNo == 0 ? 0 : 8), "a write awaits its echo");
    require(frame.dataPosition == 0 && frame.dataCount == 0, "an echo carries no data");
}

void checkRead(const VARIABLE& request)
{
    driver.sendList.clear();
    const int made = getReadFrame(QList<VARIABLE>() << request);
    const int type = typeOf(request.regName);
    require(made == (type >= 0 && request.stationNo != 0 ? 1 : 0), "only what is known is read");
    require(driver.sendList.size() == made, "one frame a read");
    if (made == 0) {
        return;
    }
    const FRAME_PRO& frame = driver.sendList.at(0);
    const ReadFrame read(frame);
    const bool coils = factsOf(type).coils;
    const long long unit = coils ? 16 : 1;
    requireCommon(frame, read, request);
    require(read.size == 8, "a read has eight bytes");
    require(read.function == (coils ? readCoils : readRegisters), "the area's read function");
    require(read.start == low16(factsOf(type).base + unit * request.address), "a read's start");
    require(read.quantity == low16(unit * request.length), "a read's quantity");
    require(frame.replyLength == wrapped(5 + 2LL * request.length), "a read's reply length");
    require(frame.dataPosition == 3 && frame.dataCount == request.length, "a read's data");
}

void checkCoilRun(const FRAME_PRO& frame, const ReadFrame& read, const VARIABLE& request)
{
    requireEcho(frame, request);
    require(read.function == writeCoils && read.start == low16(request.address),
            "a run of coils starts at its bit number");
    require(read.quantity == request.length && read.bytes[6] == (request.length + 7) / 8 % 256 &&
                read.size == 9 + (request.length + 7) / 8,
            "a run of coils has its size");
    for (int byte = 0; byte < (request.length + 7) / 8; ++byte) {
        int sum = 0;
        for (int k = 0; k < 8 && 8 * byte + k < request.length; ++k) {
            sum += request.data[8 * byte + k] << k;
        }
        require(read.bytes[7 + byte] == (sum & 0xFF), "coils are packed from bit 0 on");
    }
}

void checkRegisterBits(const VARIABLE& request, int base)
{
    if (request.stationNo == 0 || request.length > 1024) {
        require(driver.sendList.isEmpty(), "what cannot be written bit by bit is not framed");
        return;
    }
    require(driver.sendList.size() == 2, "bits of registers are a read and a write back");
    const ReadFrame first(driver.sendList.at(0));
    const FRAME_PRO& back = driver.sendList.at(1);
    const ReadFrame second(back);
    const int words = (request.address % 16 + request.length + 15) / 16;
    requireCommon(driver.sendList.at(0), first, request);
    requireCommon(back, second, request);
    require(first.function == readRegisters && second.function == writeRegisters, "read, write");
    require(first.start == low16(base + static_cast<long long>(request.address / 16)) &&
                second.start == first.start && first.quantity == words && second.quantity == words,
            "both name the registers that hold the bits");
    require(driver.sendList.at(0).replyLength == 5 + 2 * words &&
                driver.sendList.at(0).dataPosition == 3 &&
                driver.sendList.at(0).dataCount == 2 * words,
            "the read counts bytes");
    require(back.replyLength == 8 && back.dataPosition == 7 && back.dataCount == 0 &&
                second.size == 9 + 2 * words,
            "the write back has its size");
}

void checkWords(const FRAME_PRO& frame, const ReadFrame& read, const VARIABLE& request,
                const TypeFacts& facts)
{
    requireEcho(frame, request);
    const long long unit = facts.coils ? 16 : 1;
    require(read.start == low16(facts.base + unit * request.address), "a write's start");
    if (!facts.coils && request.length == 1) {
        require(read.function == writeRegister && read.size == 8 &&
                    read.quantity == hostWord(request, 0),
                "one register is written singly");
        return;
    }
    require(read.function == (facts.coils ? writeCoils : writeRegisters), "the write function");
    require(read.quantity == unit * request.length && read.bytes[6] == 2 * request.length % 256 &&
                read.size == 9 + 2 * request.length,
            "a write of words has its size");
    for (int i = 0; i < request.length; ++i) {
        for (int k = 0; facts.coils && k < 16; ++k) {
            require(read.coilAt(16 * i + k) == (hostWord(request, i) >> k & 1),
                    "a word's bit 0 is its first coil");
        }
        require(facts.coils || read.registerAt(i) == hostWord(request, i),
                "a register goes high byte first");
    }
}

void checkWrite(VARIABLE request)
{
    driver.sendList.clear();
    getWriteFrame(request);
    const int type = typeOf(request.regName);
    if (type < 0 || request.length < 0) {
        require(driver.sendList.isEmpty(), "what is unknown or negative is not written");
        return;
    }
    const TypeFacts& facts = factsOf(type);
    if (facts.bits && !facts.coils) {
        checkRegisterBits(request, facts.base);
        return;
    }
    if (request.length > (facts.bits ? 1024 : 507)) {
        require(driver.sendList.isEmpty(), "what does not fit is not written");
        return;
    }
    require(driver.sendList.size() == 1, "one frame a write");
    const FRAME_PRO& frame = driver.sendList.at(0);
    const ReadFrame read(frame);
    requireCommon(frame, read, request);
    if (facts.bits && request.length == 1) {
        requireEcho(frame, request);
        require(read.function == writeCoil && read.size == 8 &&
                    read.start == low16(static_cast<long long>(facts.base) + request.address) &&
                    read.quantity == (request.data[0] == 1 ? 0xFF00 : 0),
                "one coil is written singly");
    } else if (facts.bits) {
        checkCoilRun(frame, read, request);
    } else {
        checkWords(frame, read, request, facts);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    static HostMemory host;
    Script script(data, size);
    freshDriver(host, "7#0#0#3#10");
    VARIABLE request = VARIABLE();
    request.kind = script.byte();
    request.stationNo = script.station();
    request.regName = script.regName();
    request.address = script.address();
    request.length = script.length(200);
    const QByteArray rest = script.rest();
    for (int i = 0; i < rest.size() && i < recordDataSize; ++i) {
        request.data[i] = static_cast<unsigned char>(rest.at(i));
    }
    checkRead(request);
    checkWrite(request);
    std::vector<unsigned char> bytes(data, data + size); // its own memory: a byte too far shows
    require(crcOf(bytes.data(), static_cast<int>(size)) ==
                bitwiseCrc(bytes.data(), static_cast<int>(size)),
            "the CRC is the one made bit by bit");
    require(computate_check(bytes.data(), static_cast<unsigned short>(size % 65536)) ==
                bitwiseCrc(bytes.data(), static_cast<int>(size % 65536)),
            "the named CRC too");
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    asc2hex(text, request.address);
    return 0;
}
