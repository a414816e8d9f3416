// One request is framed; then arbitrary bytes are its reply, right or wrong.
#include "host.h"

namespace {

HostMemory host;
int calls = 0;

// A host reads back what it is told of, and may keep or change the text.
void onChange(int, int station, QString& regName, int address)
{
    unsigned char out[4] = {0, 0, 0, 0};
    intf_getData(station, regName, address, 2, out);
    regName.append(QLatin1Char('!'));
    ++calls;
}

enum Road {
    cyclicRead,
    conditionRead,
    hostWrite,
    recipeDownload,
    recipeUpload,
    handshake,
    roadCount
};

void bringOnTheLine(Script& script, Road road, const KEY_ADDRESS& key)
{
    QList<KEY_ADDRESS> keys;
    keys.append(key);
    const int watched = script.choice(3);
    if (road == cyclicRead || watched == 1) {
        intf_addrMerge(keys);
    }
    if (road == conditionRead) {
        intf_addConditionRead(keys[0], 3);
    } else if (road == hostWrite) {
        std::vector<unsigned char> values(1024);
        for (size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<unsigned char>(i % 3);
        }
        intf_setData(key.stationNo, key.regName, key.address, key.length, values.data(), 2);
    } else if (road == recipeDownload || road == recipeUpload) {
        _RCP_VAR_PRO record = _RCP_VAR_PRO();
        record.linkId = 7;
        record.stationNo = key.stationNo;
        record.regName = key.regName;
        record.address = key.address;
        record.length = key.length > 128 ? 128 : key.length;
        record.bufOffset = script.byte();
        QVector<_RCP_VAR_PRO> records;
        records.append(record);
        intf_setRcpAddress(records);
        host.block[road == recipeDownload ? 60115 : 60116] = 1;
    } else if (road == handshake) {
        driver.handshakeRequest = 1;
    }
}

bool isAwaited(const FRAME_PRO& frame, const QByteArray& reply)
{
    const int size = reply.size();
    if (size == 0 && frame.replyLength == 0) {
        return true;
    }
    if (size != frame.replyLength || size < 2 || frame.dataCount < 0) {
        return false;
    }
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(reply.constData());
    const unsigned int crc = bitwiseCrc(bytes, size - 2);
    return bytes[size - 2] == (crc & 0xFFu) && bytes[size - 1] == crc >> 8;
}

// What a decoded reply must have left in the cache.
void requireDecoded(const FRAME_PRO& frame, const QByteArray& reply)
{
    const int type = typeOf(frame.request.regName);
    require(type >= 0, "only known types are read");
    for (int i = 0; i < frame.dataCount; ++i) {
        const int high = static_cast<unsigned char>(reply.at(3 + 2 * i));
        const int low = static_cast<unsigned char>(reply.at(4 + 2 * i));
        bool found = false;
        for (int u = 0; u < driver.dataAreas.size() && !found; ++u) {
            const _DATA_& unit = driver.dataAreas.at(u);
            if (unit.station == frame.request.stationNo &&
                unit.area == QLatin1String(factsOf(type).area) &&
                unit.address == wrapped(static_cast<long long>(frame.request.address) + i)) {
                const bool coils = factsOf(type).coils;
                require(unit.deviceValue[0] == (coils ? high : low) &&
                            unit.deviceValue[1] == (coils ? low : high),
                        "the cache holds the words of the reply");
                found = true;
            }
        }
        require(found || (high == 0 && low == 0), "a value that is not zero has a unit");
    }
}

void requireWriteBack(const FRAME_PRO& back, const VARIABLE& request, const QByteArray& reply)
{
    const int first = request.address % 16;
    for (int bit = 0; bit < 8 * (reply.size() - 5); ++bit) {
        const int word = bit / 16;
        const int inWord = bit % 16;
        // Registers stand high byte first in the reply and in the frame.
        const int place = 2 * word + (inWord < 8 ? 1 : 0);
        const int was = static_cast<unsigned char>(reply.at(3 + place)) >> (inWord % 8) & 1;
        const int is = back.frame[7 + place] >> (inWord % 8) & 1;
        const int asked = bit - first;
        const bool requested = asked >= 0 && asked < request.length;
        require(is == (requested ? (request.data[asked] != 0 ? 1 : 0) : was),
                "a write back changes the requested bits and no other");
    }
    const unsigned int crc = bitwiseCrc(back.frame, back.sendLength - 2);
    require(back.frame[back.sendLength - 2] == (crc & 0xFFu) &&
                back.frame[back.sendLength - 1] == crc >> 8,
            "a write back has its CRC");
}

void answer(const FRAME_PRO& frame, QByteArray reply)
{
    const int units = driver.dataAreas.size();
    const int framesBefore = driver.sendList.size();
    const bool write = driver.sendKind == 2 || driver.sendKind == 5;
    const int callsBefore = calls;
    QString errorText;
    const int result = intf_dealRcvFrame(&reply, &errorText);
    require(!errorText.isEmpty(), "every reply is described");
    if (!isAwaited(frame, reply)) {
        require(result == 8 || result == 2, "what was not awaited is refused");
        require(driver.dataAreas.size() >= units, "no unit goes");
        require(result == 2 || calls == callsBefore, "a refused reply is told to nobody");
        require(result == 2 || driver.sendList.size() == framesBefore, "the frame stays");
        require(result == 8 || driver.commFailed == 1, "an abandoned request marks the link");
        return;
    }
    require(result == 1, "what was awaited is accepted");
    require(driver.commFailed == 0 && driver.retryCount == 0, "a good reply clears the link");
    require(driver.sendList.size() == framesBefore - 1, "the frame is answered");
    if (frame.dataCount > 0 && write) {
        require(driver.sendList.size() == 1, "a write back follows its read");
        requireWriteBack(driver.sendList.at(0), frame.request, reply);
    } else if (frame.dataCount > 0) {
        requireDecoded(frame, reply);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    Script script(data, size);
    freshDriver(host, "7#0#0#3#10");
    host.block[60115] = host.block[60116] = 0;
    driver.mergeGap = driver.pieceWordLimit = script.byte();
    driver.pieceBitLimit = 8 * driver.mergeGap;
    if (script.choice(4) != 0) {
        intf_setAddrValueChangeCallBack(onChange);
    }
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = script.station();
    key.regName = script.regName();
    key.address = script.address();
    key.length = script.length(130);
    key.bitFlag = script.choice(2) - 1;
    bringOnTheLine(script, static_cast<Road>(script.choice(roadCount)), key);

    for (int turn = 0; turn < 4; ++turn) {
        FRAME_PRO frame = FRAME_PRO();
        if (intf_getSendFrame(&frame) == 0) {
            return 0;
        }
        require(frame.sendLength >= 0 && frame.sendLength <= 1024, "a frame fits its buffer");
        const int way = script.choice(4);
        QByteArray reply;
        if (way == 0) {
            reply = script.rest();
        } else if (frame.replyLength >= 2 && frame.replyLength < 3000) { // right in length and CRC
            reply = withCrc(script.bytes(frame.replyLength - 2));
            if (way == 1 && script.choice(4) == 0) {
                reply.chop(script.byte() % reply.size());
            }
        }
        answer(frame, reply);
    }
    return 0;
}
