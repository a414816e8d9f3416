#include "caller.h"

#include <QStringList>
#include <QVector>
#include <iterator>
#include <map>

#include "intf.h"

namespace {

enum {
    maxDepth = 2,
    tag = 7
};

thread_local Caller* ofThisThread = nullptr;

const char* const regNames[] = {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W",
                                "M_W",   "R_W",   "R_D",   "T",     "C",   "unknown"};

// Lives as long as the program: ThreadSanitizer does not see how Qt counts who shares a text, and
// would miss why the last of them, on whatever thread, may free it.
QString name(const char* text)
{
    static std::mutex mutex;
    static std::map<std::string, QString> names;
    const std::lock_guard<std::mutex> lock(mutex);
    const auto made = names.emplace(text, QString());
    if (made.second) {
        made.first->second = QString::fromLatin1(text);
    }
    return made.first->second;
}

struct Range {
    const char* regName;
    int address;
    int length;
};

// The places that are written, the values that change with them, and others.
const std::vector<Range> plans[] = {
    {{"R_W", 0, 400},
     {"R_D", 100, 40},
     {"R_bit", 1200 * 16, 800},
     {"M_bit", 0, 640},
     {"C", 0, 128}},
    {{"R_W", 3000, 8}, {"R_W", 0, 1200}, {"Q_W", 0, 60}, {"M_W", 0, 40}, {"T", 0, 20}},
    {{"R_bit", 1200 * 16, 400}, {"R_D", 3000, 8}, {"M_bit", 100, 1}, {"C", 5, 3}},
};

KEY_ADDRESS keyOf(int station, const char* regName, int address, int length)
{
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = station;
    key.regName = name(regName);
    key.address = address;
    key.length = length;
    return key;
}

} // namespace

struct Caller::Deed {
    int weight;
    void (Caller::*run)();
};

const Caller::Deed Caller::deeds[] = {
    {300, &Caller::poll},    {200, &Caller::write},    {20, &Caller::writeShared},
    {150, &Caller::read},    {4, &Caller::plan},       {40, &Caller::askOnce},
    {4, &Caller::setRecipe}, {4, &Caller::wantRecipe}, {80, &Caller::editor},
    {40, &Caller::identity}, {10, &Caller::callBack},  {4, &Caller::reset},
};

Caller::Caller(Host& host, int index)
    : host_(host), index_(index), random_(host.seed_ + static_cast<unsigned int>(index))
{
    ofThisThread = this;
}

Caller::~Caller()
{
    ofThisThread = nullptr;
}

Caller* Caller::current()
{
    return ofThisThread;
}

int Caller::below(int limit)
{
    return static_cast<int>(random_() % static_cast<unsigned int>(limit));
}

int Caller::call(int result)
{
    ++callCount;
    return result;
}

void Caller::begin()
{
    setRecipe();
    plan();
}

// ---- what is allowed when ----------------------------------------------------------------------

// The two that take the mutexes. A write that is still being announced is not to be polled for.
bool Caller::mayPoll() const
{
    return !holdsHostMutex_ && !holdsDriverMutex_ && (depth_ == 0 || !host_.kind_.inTurn) &&
           (index_ == 0 || !host_.kind_.onePolls);
}

// The host's mutex is taken before driver.mutex where one thread takes both.
void Caller::act()
{
    if (host_.kind_.onePolls && index_ == 0 && depth_ == 0) {
        poll();
        return;
    }
    if (host_.kind_.holdsHostMutex && !holdsHostMutex_ && !holdsDriverMutex_ && below(4) == 0) {
        actHolding(host_.resources_[0].mutex, holdsHostMutex_);
    } else if (host_.kind_.holdsDriverMutex && !holdsDriverMutex_ && below(4) == 0) {
        actHolding(driver.mutex, holdsDriverMutex_);
    } else {
        actPlainly();
    }
}

void Caller::actHolding(QMutex& mutex, bool& holds)
{
    mutex.lock();
    holds = true;
    act();
    actPlainly();
    holds = false;
    mutex.unlock();
}

void Caller::actPlainly()
{
    int all = 0;
    for (const Deed& deed : deeds) {
        all += deed.weight;
    }
    int drawn = below(all);
    for (const Deed& deed : deeds) {
        drawn -= deed.weight;
        if (drawn < 0) {
            (this->*deed.run)();
            return;
        }
    }
}

void Caller::told()
{
    if (depth_ == maxDepth) {
        return;
    }
    ++depth_;
    if (host_.kind_.waitsInCallback && below(8) == 0) {
        host_.waitForReader();
    } else if (below(4) == 0) {
        act();
    }
    --depth_;
}

// ---- deeds -------------------------------------------------------------------------------------

void Caller::poll()
{
    if (!mayPoll()) {
        return;
    }
    if (host_.kind_.inTurn) {
        const std::lock_guard<std::mutex> line(host_.line_);
        transact();
    } else {
        transact();
    }
}

bool Caller::transact()
{
    FRAME_PRO frame = FRAME_PRO();
    if (call(intf_getSendFrame(&frame)) == 0) {
        return false;
    }
    QByteArray reply;
    // A tenth of the frames is lost on the way; not where another thread's reply may be taken for
    // the one that is missing.
    if (!host_.kind_.inTurn || below(10) != 0) {
        reply = host_.plant_.answer(frame);
        host_.ledger_.executed(frame);
    }
    QString text;
    return call(intf_dealRcvFrame(&reply, &text)) == replyAccepted;
}

void Caller::write()
{
    Place* place = host_.ledger_.choose(index_, depth_ == 0, !holdsDriverMutex_, random_);
    if (place != nullptr) {
        std::vector<unsigned char> value = host_.ledger_.ask(*place);
        call(intf_setData(place->station, name(place->kind->regName), place->address, 1,
                          value.data(), 2));
    }
}

// Whose write comes last, nobody knows.
void Caller::writeShared()
{
    unsigned char value[] = {static_cast<unsigned char>(below(256)), 1, 2, 3};
    const bool dword = below(2) == 0;
    call(
        intf_setData(1, name(dword ? "R_D" : "R_W"), 3000 + 2 * below(4), dword ? 2 : 1, value, 2));
}

void Caller::read()
{
    unsigned char out[256];
    call(intf_getData(1 + below(2), name(regNames[below(12)]), below(1200), below(100), out));
}

void Caller::plan()
{
    QList<KEY_ADDRESS> keys;
    for (const Range& range : plans[below(static_cast<int>(std::size(plans)))]) {
        for (int station = 1; station <= Plant::stations; ++station) {
            keys.append(keyOf(station, range.regName, range.address, range.length));
        }
    }
    call(intf_addrMerge(keys));
}

void Caller::askOnce()
{
    KEY_ADDRESS key = keyOf(1 + below(2), below(2) == 0 ? "R_W" : "M_W", below(60), 1 + below(30));
    call(intf_addConditionRead(key, 3));
}

// All plans have three requests, so that a transfer goes on in whichever comes.
void Caller::setRecipe()
{
    QVector<_RCP_VAR_PRO> records;
    const int first = 3100 + below(50);
    for (int i = 0; i < 3; ++i) {
        _RCP_VAR_PRO record = _RCP_VAR_PRO();
        record.linkId = tag;
        record.stationNo = 1 + i % 2;
        record.regName = name("R_W");
        record.address = first + 100 * i;
        record.length = 1 + below(40);
        record.bufOffset = 50 * i;
        records.append(record);
    }
    call(intf_setRcpAddress(records));
}

void Caller::wantRecipe()
{
    if (holdsDriverMutex_ && !holdsHostMutex_) {
        return;
    }
    // With a mutex of its own in hand a thread takes no other.
    const bool either = host_.kind_.resets && !holdsHostMutex_;
    Host::Resources& asked = host_.resources_[either ? below(2) : 0];
    if (!holdsHostMutex_) {
        asked.mutex.lock();
    }
    asked.block[below(2) == 0 ? downloadFlagOffset : uploadFlagOffset] = 1;
    if (!holdsHostMutex_) {
        asked.mutex.unlock();
    }
}

void Caller::editor()
{
    const QString regName = name(regNames[below(12)]);
    int address = 0;
    call(intf_checkAddrValidity(regName, name("12.5"), &address, 1, 0));
    call(intf_checkAddr(regName, name("100"), &address, 1, 1, 1));
    QStringList list;
    call(intf_getRegListByType(below(3), &list));
    call(intf_getRegDiscription(regName, &list));
    QVector<QString> texts;
    QVector<int> addresses;
    call(intf_multiCopy(regName, below(4000), 5, 1, texts, addresses));
}

void Caller::identity()
{
    intf_SetDriverPropertyPage(name(regNames[below(12)]));
    QString text = intf_getVersion();
    intf_getDriverPropertyPage(text);
    intf_getDriverParameter(text);
    int type = -1;
    intf_getProtocolType(&type);
    callCount += 5;
}

void Caller::callBack()
{
    intf_setAddrValueChangeCallBack(below(2) == 0 ? Host::onChange : Host::onChangeToo);
    ++callCount;
}

void Caller::reset()
{
    if (host_.kind_.resets) {
        host_.initialise(static_cast<size_t>(below(2)));
        ++callCount;
    }
}
