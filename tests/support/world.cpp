#include "world.h"

#include <QDebug>
#include <utility>

#include "driver_reset.h"

namespace {

Notices& recorded()
{
    static Notices notices;
    return notices;
}

std::function<void(const Notice&)>& actionWhenTold()
{
    static std::function<void(const Notice&)> action;
    return action;
}

void record(int tag, int station, QString& regName, int address)
{
    const Notice notice = {tag, station, text(regName), address};
    recorded().push_back(notice);
    const std::function<void(const Notice&)> action = actionWhenTold(); // it may replace itself
    if (action) {
        action(notice);
    }
}

std::vector<std::string>& debugLines()
{
    static std::vector<std::string> lines;
    return lines;
}

std::function<void()> onFirstLine;

void keepDebugLine(QtMsgType type, std::string line)
{
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    if (type == QtDebugMsg) {
        debugLines().push_back(line);
        std::function<void()> action;
        action.swap(onFirstLine);
        if (action) {
            action();
        }
    }
}

#if QT_VERSION >= 0x050000
void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    keepDebugLine(type, text(message));
}
using MessageHandler = QtMessageHandler;
MessageHandler installHandler(MessageHandler handler)
{
    return qInstallMessageHandler(handler);
}
#else
void handleMessage(QtMsgType type, const char* message)
{
    keepDebugLine(type, message);
}
using MessageHandler = QtMsgHandler;
MessageHandler installHandler(MessageHandler handler)
{
    return qInstallMsgHandler(handler);
}
#endif

MessageHandler previousHandler = nullptr;

} // namespace

bool operator==(const Notice& a, const Notice& b)
{
    return a.tag == b.tag && a.station == b.station && a.name == b.name && a.address == b.address;
}

std::ostream& operator<<(std::ostream& out, const Notice& notice)
{
    return out << '{' << notice.tag << ", " << notice.station << ", \"" << notice.name << "\", "
               << notice.address << '}';
}

const std::string cyclicRead = frame("01 03 05 64 00 01");

DebugLines::DebugLines(std::function<void()> onFirst)
{
    debugLines().clear();
    onFirstLine = std::move(onFirst);
    previousHandler = installHandler(handleMessage);
}

DebugLines::~DebugLines()
{
    installHandler(previousHandler);
    onFirstLine = nullptr;
}

const std::vector<std::string>& DebugLines::lines() const
{
    return debugLines();
}

DriverTest::DriverTest() : polled(), hostBlock(60200, 0), recipeBuffer(4096, 0)
{
    resetDriver();
    intf_setAddrValueChangeCallBack(record);
    configure();
    recorded().clear();
}

DriverTest::~DriverTest()
{
    // Nothing of this host may be reached after it is gone.
    whenTold(nullptr);
    intf_initProperty(nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    intf_setAddrValueChangeCallBack(nullptr);
}

void DriverTest::configure(const char* property)
{
    intf_initProperty(hostBlock.data(), 0, recipeBuffer.data(), nullptr, property, &hostMutex);
}

Notices DriverTest::notices()
{
    Notices all;
    all.swap(recorded());
    return all;
}

void DriverTest::whenTold(std::function<void(const Notice&)> action)
{
    actionWhenTold() = std::move(action);
}

int DriverTest::plan(const QList<KEY_ADDRESS>& keys)
{
    DebugLines quiet;
    QList<KEY_ADDRESS> copy = keys;
    return intf_addrMerge(copy);
}

int ask(KEY_ADDRESS wanted, int kind)
{
    return intf_addConditionRead(wanted, kind);
}

int setRecipe(QVector<_RCP_VAR_PRO> records)
{
    return intf_setRcpAddress(records);
}

void DriverTest::fillConditionList(int count)
{
    driver.conditionList.clear();
    for (int i = 0; i < count; ++i) {
        VARIABLE one = request("R_W", 1000 + i, 1);
        one.kind = 1;
        one.data[0] = 0x77;
        driver.conditionList.append(one);
    }
}

int DriverTest::answer(const char* bytes)
{
    EXPECT_NE(poll(), "");
    return reply(withCrc(bytes));
}

std::string DriverTest::device(const char* area, int address)
{
    return toHex(unit(1, area, address).deviceValue, 2);
}

std::string DriverTest::poll()
{
    FRAME_PRO frame = FRAME_PRO();
    if (intf_getSendFrame(&frame) == 0) {
        return "";
    }
    polled = frame;
    return frameHex(polled);
}

std::string DriverTest::exchange()
{
    const std::string sent = poll();
    if (!driver.sendList.isEmpty()) {
        reply(goodReplyTo(polled));
    }
    return sent;
}

int DriverTest::abandon()
{
    for (int count = 1; count < 100; ++count) {
        if (reply(QByteArray()) == 2) {
            return count;
        }
    }
    return -1;
}

int DriverTest::reply(const QByteArray& bytes)
{
    QByteArray received = bytes;
    return intf_dealRcvFrame(&received, &errorText_);
}

std::string DriverTest::errorText() const
{
    return text(errorText_);
}

int DriverTest::unitIndex(int station, const char* area, int address)
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        if (unit.station == station && text(unit.area) == area && unit.address == address) {
            return i;
        }
    }
    return -1;
}

_DATA_ DriverTest::unit(int station, const char* area, int address)
{
    const int index = unitIndex(station, area, address);
    if (index < 0) {
        ADD_FAILURE() << "no unit " << station << '/' << area << ' ' << address;
        return _DATA_();
    }
    return driver.dataAreas.at(index);
}

std::string DriverTest::read(const char* regName, int address, int length, int station)
{
    std::vector<unsigned char> out(4096, 0xEE);
    if (intf_getData(station, name(regName), address, length, out.data()) != 1) {
        return "refused";
    }
    size_t size = out.size();
    while (size > 0 && out[size - 1] == 0xEE) {
        --size;
    }
    return toHex(out.data(), static_cast<int>(size));
}

int DriverTest::write(const char* regName, int address, int length, const char* bytes, int station,
                      int kind)
{
    DebugLines quiet;
    QByteArray data = hex(bytes);
    return intf_setData(station, name(regName), address, length,
                        reinterpret_cast<unsigned char*>(data.data()), kind);
}
