// The whole driver under a script of host calls, with all that must hold checked after each.
#include <cstring>
#include <memory>

#include "cache_watch.h"
#include "host.h"
#include "queue_model.h"

namespace {

enum {
    maxCalls = 400,
    maxUnits = 3000,
    maxNestedCalls = 12
};

struct World {
    explicit World(const Script& input) : script(input) {}

    Script script;
    HostMemory host;
    QueueModel model;
    CacheWatch watch;
    std::unique_ptr<FRAME_PRO> onLine; // handed out, not answered yet
    bool repeated = false;             // the frame on the line is that of an earlier request
    bool unsure = false;               // something was answered or changed behind the model's back
    int link = 0;                      // commFailed as the last exchange left it
    int resets = 0;
    bool hasBlock = true;
    bool hasBuffer = true;
    int nestedCalls = 0;
    int depth = 0;
    int callbackMode = 0;
    QByteArray* received = nullptr; // the host's receive buffer while the driver looks at it
};

World* world = nullptr;

void callFromWithin();

void onChange(int, int station, QString& regName, int address)
{
    unsigned char out[4] = {0, 0, 0, 0};
    intf_getData(station, regName, address, 2, out);
    regName.clear();
    if (world->received != nullptr && world->callbackMode % 2 == 1) {
        world->received->fill('\x77');
        *world->received = QByteArray();
    }
    if (world->callbackMode >= 2 && world->depth < 3 && world->nestedCalls < maxNestedCalls) {
        ++world->depth;
        ++world->nestedCalls;
        callFromWithin();
        --world->depth;
    }
}

// ---- configuration ----------------------------------------------------------------------------

void initialise(World& w)
{
    const char* const texts[] = {"7#0#0#3#10", "7#0#0#1#0", "7#1#0#2#5",   "7#0#0#0#128",
                                 "7#0#0#5#-3", "x##",       "7#0#0#2#1#9", "7#0#0#3#300"};
    const int chosen = w.script.byte();
    w.hasBlock = chosen % 16 != 15;
    w.hasBuffer = chosen % 16 != 14;
    int result = -1;
    require(intf_initProperty(w.hasBlock ? w.host.block.data() : nullptr, 5,
                              w.hasBuffer ? w.host.recipe.data() : nullptr, &result,
                              texts[chosen / 16 % 8],
                              chosen % 16 != 13 ? &w.host.mutex : nullptr) == 1,
            "initialisation gives 1");
    require(result == 0, "and stores 0");
    w.model.reset();
    w.watch.reset();
    w.onLine.reset();
    w.unsure = w.depth > 0;
    w.link = 0;
    ++w.resets;
    require(driver.dataAreas.isEmpty() && driver.sendList.isEmpty() && driver.readList.isEmpty() &&
                driver.writeList.isEmpty() && driver.conditionList.isEmpty(),
            "initialisation empties every list");
}

void askWhoItIs(World& w)
{
    int type = -1;
    intf_getProtocolType(&type);
    QString text;
    intf_getDriverParameter(text);
    require(type == 0 && intf_getVersion() == QLatin1String("2.0.0.0"), "who the driver is");
    require(text.count(QLatin1Char(',')) == 20, "21 items");
    intf_SetDriverPropertyPage(QString::number(w.script.byte()));
    intf_getDriverPropertyPage(text);
    require(text == QLatin1String("0_0"), "the property page");
    QStringList list;
    intf_getRegListByType(w.script.byte() - 2, &list);
    intf_getRegDiscription(w.script.regName(), &list);
    int address = 0;
    const QString regName = w.script.regName();
    const QString asked = QString::fromLatin1(w.script.bytes(w.script.choice(8)));
    intf_checkAddr(regName, asked, &address, w.script.choice(10) - 1, w.script.length(9), 1);
    intf_checkAddrValidity(regName, asked, &address, w.script.length(9), w.script.choice(2));
    QVector<QString> texts;
    QVector<int> addresses;
    intf_multiCopy(regName, w.script.address(), w.script.choice(20), w.script.choice(5) - 3, texts,
                   addresses);
}

// ---- planning ---------------------------------------------------------------------------------

KEY_ADDRESS keyOf(Script& script)
{
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = script.station();
    key.regName = script.regName();
    key.address = script.address();
    key.length = script.length(24);
    key.bitFlag = script.choice(2) - 1;
    return key;
}

void planCyclic(World& w)
{
    QList<KEY_ADDRESS> keys;
    const int count = w.script.choice(6);
    for (int i = 0; i < count; ++i) {
        keys.append(keyOf(w.script));
    }
    require(intf_addrMerge(keys) == driver.readList.size(), "the plan's size");
    for (int i = 0; i < driver.readList.size(); ++i) {
        require(driver.readList.at(i).length <= 128, "no read is longer than 128 units");
    }
}

void addCondition(World& w)
{
    KEY_ADDRESS key = keyOf(w.script);
    const int before = driver.conditionList.size();
    const int result = intf_addConditionRead(key, w.script.byte());
    require(result == (typeOf(key.regName) < 0 ? -1 : 1), "unknown names are refused");
    require(result == 1 || driver.conditionList.size() == before, "and queue nothing");
}

void planRecipe(World& w)
{
    QVector<_RCP_VAR_PRO> records;
    const int count = w.script.choice(5);
    for (int i = 0; i < count; ++i) {
        _RCP_VAR_PRO record = _RCP_VAR_PRO();
        record.linkId = w.script.byte() < 240 ? driver.callBackTag : 9;
        record.stationNo = w.script.station();
        record.regName = w.script.regName();
        record.address = w.script.address();
        record.length = w.script.length(24) % 129;
        record.bufOffset = w.script.byte();
        records.append(record);
    }
    require(intf_setRcpAddress(records) == driver.recipeVars.size(), "the records taken");
}

// ---- the line ---------------------------------------------------------------------------------

bool sameFrame(const FRAME_PRO& a, const FRAME_PRO& b)
{
    return std::memcmp(a.frame, b.frame, sizeof(a.frame)) == 0 && a.sendLength == b.sendLength &&
           a.replyLength == b.replyLength && a.dataPosition == b.dataPosition &&
           a.dataCount == b.dataCount && a.spare == b.spare &&
           a.request.stationNo == b.request.stationNo && a.request.regName == b.request.regName &&
           a.request.address == b.request.address && a.request.length == b.request.length &&
           std::memcmp(a.request.data, b.request.data, sizeof(a.request.data)) == 0;
}

// The order of priorities; -1 where an earlier request is repeated or nothing changes.
int nextKind(const World& w)
{
    const bool recipeLeft = driver.recipeIndex < driver.recipeRequests.size();
    if (driver.handshakeRequest != 0) {
        return 1;
    }
    if (w.hasBlock && w.host.block[60115] == 1) {
        return recipeLeft && w.hasBuffer ? 5 : -1;
    }
    if (w.hasBlock && w.host.block[60116] == 1) {
        return recipeLeft ? 6 : -1;
    }
    if (!driver.writeList.isEmpty() && driver.burstCount <= 9) {
        return 2;
    }
    if (!driver.conditionList.isEmpty() && driver.burstCount < 3) {
        return 3;
    }
    return driver.readList.isEmpty() ? 0 : 4;
}

void requireFrame(const World& w, const FRAME_PRO& frame)
{
    require(frame.sendLength >= 0 && frame.sendLength <= 1024, "a frame fits its buffer");
    if (frame.sendLength > 0) {
        const unsigned int crc = bitwiseCrc(frame.frame, frame.sendLength - 2);
        require(frame.frame[frame.sendLength - 2] == (crc & 0xFFu) &&
                    frame.frame[frame.sendLength - 1] == crc >> 8,
                "a frame has its CRC");
    }
    require(driver.sendKind != 2 || w.repeated || w.unsure || w.model.queue().empty() ||
                sameRequest(w.model.queue().front(), frame.request),
            "the write on the line is the head of the queue");
}

void poll(World& w)
{
    const bool idle = driver.sendList.isEmpty();
    const int kind = idle ? nextKind(w) : driver.sendKind;
    const int before = driver.sendKind;
    FRAME_PRO frame = FRAME_PRO();
    const int result = intf_getSendFrame(&frame);
    require(driver.sendKind == (kind < 0 ? before : kind), "the priorities");
    require(result == (driver.sendList.isEmpty() ? 0 : 1), "1 with a frame, 0 without");
    if (result == 0) {
        return;
    }
    const bool answered = idle && w.received != nullptr; // a notice after the reply polls on
    require(w.onLine == nullptr || w.unsure || answered || sameFrame(*w.onLine, frame),
            "the same frame is handed out until it is answered");
    require(sameFrame(driver.sendList.at(0), frame), "the head of the list is handed out");
    if (idle) {
        w.repeated = kind < 0;
    }
    requireFrame(w, frame);
    w.onLine.reset(new FRAME_PRO(frame));
}

QByteArray replyFor(World& w)
{
    const int way = w.script.choice(16);
    if (way == 0 || driver.sendList.isEmpty()) {
        return w.script.bytes(w.script.choice(20));
    }
    const FRAME_PRO& head = driver.sendList.at(0);
    if (way == 1 || head.replyLength < 2 || head.replyLength > 4000) {
        return QByteArray();
    }
    if (way == 2) { // an exception
        return withCrc(w.script.bytes(3));
    }
    const int step = w.script.byte();
    QByteArray reply(head.replyLength - 2, static_cast<char>(step));
    for (int i = 3; i < reply.size() && way > 7; ++i) {
        reply[i] = static_cast<char>(step * i);
    }
    reply = withCrc(reply);
    if (way == 3) { // a flipped bit
        const int place = w.script.byte() % reply.size();
        reply[place] = static_cast<char>(reply.at(place) ^ 1 << w.script.choice(8));
    }
    return reply;
}

std::vector<_DATA_> cached()
{
    std::vector<_DATA_> units;
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        units.push_back(driver.dataAreas.at(i));
    }
    return units;
}

void requireUnchanged(const std::vector<_DATA_>& before)
{
    require(static_cast<int>(before.size()) == driver.dataAreas.size(), "no unit comes or goes");
    for (size_t i = 0; i < before.size(); ++i) {
        const _DATA_& unit = driver.dataAreas.at(static_cast<int>(i));
        require(unit.address == before[i].address && unit.writePending == before[i].writePending &&
                    unit.pendingBits == before[i].pendingBits &&
                    std::memcmp(unit.deviceValue, before[i].deviceValue, 4) == 0 &&
                    std::memcmp(unit.pendingValue, before[i].pendingValue, 4) == 0,
                "a refused reply changes no unit");
    }
}

void answer(World& w)
{
    const int kind = driver.sendKind;
    const int frames = driver.sendList.size();
    const int resets = w.resets;
    const bool nullReply = w.script.byte() == 255;
    QByteArray reply = nullReply ? QByteArray() : replyFor(w);
    const std::vector<_DATA_> before = cached();
    if (w.depth > 0) {
        w.unsure = true;
    }
    QString errorText;
    w.received = &reply;
    const int result = intf_dealRcvFrame(nullReply ? nullptr : &reply, &errorText);
    w.received = nullptr;
    require(result == 0 || result == 1 || result == 2 || result == 8, "a result of the table");
    require((result == 0) == (frames == 0), "0 means that nothing was outstanding");
    if (result == 0 || result == 8) {
        requireUnchanged(before);
        return;
    }
    if (w.resets != resets) {
        return; // a reset from within is the last word
    }
    w.link = result == 2 ? 1 : 0;
    w.onLine.reset();
    if (kind == 2 && (result == 2 || frames == 1)) {
        // A recipe flag without recipe addresses repeats the write before: the next one goes
        // with its answer.
        if (w.repeated && !w.model.queue().empty()) {
            w.watch.excuse(w.model.queue().front());
        }
        w.model.headLeaves();
    }
}

// ---- the cache --------------------------------------------------------------------------------

void readValues(World& w)
{
    const QString regName = w.script.regName();
    const int type = typeOf(regName);
    const int station = w.script.station();
    const int address = w.script.address();
    const int length = w.script.length(40);
    const int units = length < 0 ? 0 : length;
    const int bytes = type < 0                          ? 0
                      : factsOf(type).bits              ? units
                      : regName == QLatin1String("R_D") ? units / 2 * 4
                                                        : 2 * units;
    std::vector<unsigned char> out(static_cast<size_t>(bytes), 0xEE); // exactly as long as needed
    require(intf_getData(station, regName, address, length, out.data()) == (type < 0 ? -1 : 1),
            "unknown names are refused");
}

void writeValues(World& w)
{
    QueuedWrite write;
    write.regName = w.script.regName();
    const int type = typeOf(write.regName);
    write.station = w.script.station();
    write.address = w.script.address();
    write.length = w.script.length(24);
    write.kind = w.script.byte();
    const int first = w.script.byte();
    const bool bits = type >= 0 && factsOf(type).bits;
    for (int i = 0; i < write.length * (bits ? 1 : 2); ++i) {
        write.data.append(static_cast<char>(bits ? (first >> (i % 8) & 1) : first + i));
    }
    std::vector<unsigned char> data(write.data.begin(), write.data.end());
    const bool cacheOnly = driver.writeToCacheOnly != 0;
    const bool tooLong = write.length > (bits ? 1024 : 512);
    const bool refused = !cacheOnly && (type < 0 || tooLong);
    std::deque<QueuedWrite> dropped;
    if (!refused && !cacheOnly && write.length >= 0) {
        w.model.write(write, dropped);
    }
    const int resets = w.resets;
    require(intf_setData(write.station, write.regName, write.address, write.length, data.data(),
                         write.kind) == (refused ? -1 : 1),
            "1, or -1 for what cannot be queued");
    if (w.resets != resets || refused || type < 0) {
        return;
    }
    for (const QueuedWrite& piece : dropped) {
        w.watch.excuse(piece);
    }
    if (cacheOnly) {
        w.watch.excuse(write);
    }
}

// ---- the host's own hands ---------------------------------------------------------------------

void changeFromOutside(World& w)
{
    switch (w.script.choice(6)) {
    case 0:
        w.unsure = true;
        w.watch.excuseAll();
        driver.writeList.clear();
        return;
    case 1:
        driver.dataAreas.clear();
        return;
    case 2:
        if (!driver.dataAreas.isEmpty()) { // a second record of a unit: the first one wins
            _DATA_ copy = driver.dataAreas.at(w.script.byte() % driver.dataAreas.size());
            copy.writePending = 0;
            copy.pendingBits = 0;
            driver.dataAreas.append(copy);
        }
        return;
    case 3:
        driver.readList.clear();
        return;
    case 4:
        driver.conditionList.clear();
        return;
    case 5:
        driver.recipeRequests.clear();
        return;
    }
}

void setFlags(World& w)
{
    const int chosen = w.script.byte();
    w.host.block[60115] = static_cast<unsigned char>(chosen % 2);
    w.host.block[60116] = static_cast<unsigned char>(chosen / 2 % 2);
    driver.handshakeRequest = chosen / 4 % 16 == 15 ? 1 : 0;
}

void setCallback(World& w)
{
    w.callbackMode = w.script.choice(4);
    intf_setAddrValueChangeCallBack(w.callbackMode == 0 ? nullptr : onChange);
}

// ---- the script -------------------------------------------------------------------------------

void oneCall(World& w, int call)
{
    if (call < 70) {
        poll(w);
    } else if (call < 140) {
        answer(w);
    } else if (call < 180) {
        writeValues(w);
    } else if (call < 200) {
        readValues(w);
    } else if (call < 215) {
        addCondition(w);
    } else if (call < 225) {
        planCyclic(w);
    } else if (call < 233) {
        planRecipe(w);
    } else if (call < 240) {
        setFlags(w);
    } else if (call < 244) {
        initialise(w);
    } else if (call < 248) {
        setCallback(w);
    } else if (call < 251) {
        askWhoItIs(w);
    } else {
        changeFromOutside(w);
    }
}

void callFromWithin()
{
    oneCall(*world, world->script.byte());
}

void requireInvariants(World& w, int call)
{
    require(driver.writeList.size() <= 513 && driver.conditionList.size() <= 513, "the queue caps");
    require(driver.sendList.size() <= 2, "a request has at most two frames");
    require(driver.burstCount >= 0 && driver.burstCount <= 10, "the burst limit");
    require(driver.sendKind >= 0 && driver.sendKind <= 6, "a send kind of the table");
    require(driver.retryCount == 0 || driver.retryCount < driver.retryLimit, "the retry limit");
    require(driver.regNames.size() == typeCount, "the register names stay");
    // Going through a large cache costs as much as all the rest: every few calls find it too.
    const bool cacheToo = driver.dataAreas.size() < 64 || call % 8 == 0;
    if (cacheToo) {
        CacheWatch::requireIndexAgrees();
    }
    if (w.unsure) {
        return;
    }
    require(driver.commFailed == w.link, "the link is as the last exchange left it");
    require(w.onLine == nullptr ||
                (!driver.sendList.isEmpty() && sameFrame(*w.onLine, driver.sendList.at(0))),
            "the frame on the line is unchanged until it is answered or given up");
    w.model.requireAgreement();
    if (cacheToo) {
        w.watch.requireReasons(w.model);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    World w(Script(data, size));
    world = &w;
    freshDriver(w.host, "7#0#0#3#10");
    setCallback(w);
    for (int call = 0; call < maxCalls && !w.script.ended() && driver.dataAreas.size() < maxUnits;
         ++call) {
        oneCall(w, w.script.byte());
        requireInvariants(w, call);
    }
    // Nothing of this host may be reached after it is gone.
    intf_initProperty(nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    intf_setAddrValueChangeCallBack(nullptr);
    return 0;
}
