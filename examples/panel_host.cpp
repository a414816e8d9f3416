// A panel's host on one page: every step from loading the driver to unloading it, in order.
// C++11 and Qt 4.8 suffice. Only answer() is not for copying: it stands for the controller.
#include <QByteArray>
#include <QMutex>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <vector>

#include <intf.h>

static void* library = nullptr;

template <typename Function>
static Function* resolve(const char* name)
{
    void* const address = dlsym(library, name);
    if (address == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    return reinterpret_cast<Function*>(address);
}

// Called by the driver within a poll or a write, once for each watched view that changed. Take a
// note here and read, write or plan later: the driver is in the middle of something.
static int changes = 0;
static void valueChanged(int tag, int station, QString& regName, int address)
{
    ++changes;
    std::printf("link %d: %d/%s %d changed\n", tag, station, regName.toLatin1().constData(),
                address);
}

// The driver tells of each key that it plans and each write that it queues, on Qt's debug stream.
// Without a handler the lines go to the console, which takes seconds for a thousand keys where that
// is a serial one.
#if QT_VERSION >= 0x050000
static void takeMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type != QtDebugMsg) {
        std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    }
}
#else
#define qInstallMessageHandler qInstallMsgHandler
static void takeMessage(QtMsgType type, const char* text)
{
    if (type != QtDebugMsg) {
        std::fprintf(stderr, "%s\n", text);
    }
}
#endif

// In a panel: write the bytes to the serial port, then collect replyLength bytes, or what came
// until the line was silent for 3.5 characters or the time was over. Keep 3.5 characters of
// silence before the next frame. Nothing came: hand in an empty array.
static QByteArray answer(const FRAME_PRO& frame)
{
    static const char* const exchanges[][2] = {
        {"01011010001038c3", "0101021000b43c"},             // M word 1: bit 20 is set, 16 not
        {"010305640004051a", "01030800640065006600675dec"}, // R 100 to 103: 100, 101, 102, 103
        {"0106056404d24a44", "0106056404d24a44"},           // R 100 := 1234, the echo
    };
    const QByteArray sent(reinterpret_cast<const char*>(frame.frame), frame.sendLength);
    for (const auto& exchange : exchanges) {
        if (sent.toHex() == exchange[0]) {
            return QByteArray::fromHex(exchange[1]);
        }
    }
    return QByteArray(); // switched off
}

static KEY_ADDRESS watched(const char* regName, int address, int length)
{
    KEY_ADDRESS key = KEY_ADDRESS(); // all zero: no record has a constructor
    key.stationNo = 1;
    key.regName = QString::fromLatin1(regName);
    key.address = address;
    key.length = length;
    return key;
}

int main(int argc, char** argv)
{
    // 1. Load and resolve by name.
    library = dlopen(argc > 1 ? argv[1] : "libdov417modbus.so.2", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto getVersion = resolve<decltype(intf_getVersion)>("intf_getVersion");
    const auto setCallBack =
        resolve<decltype(intf_setAddrValueChangeCallBack)>("intf_setAddrValueChangeCallBack");
    const auto initProperty = resolve<decltype(intf_initProperty)>("intf_initProperty");
    const auto addrMerge = resolve<decltype(intf_addrMerge)>("intf_addrMerge");
    const auto getSendFrame = resolve<decltype(intf_getSendFrame)>("intf_getSendFrame");
    const auto dealRcvFrame = resolve<decltype(intf_dealRcvFrame)>("intf_dealRcvFrame");
    const auto getData = resolve<decltype(intf_getData)>("intf_getData");
    const auto setData = resolve<decltype(intf_setData)>("intf_setData");
    std::printf("version %s\n", getVersion().toLatin1().constData());

    // 2. Callback first, then settings and what recipes need; these must outlive the library.
    // Tag 1, writes go out, 3 attempts, holes of up to 12 words are read along.
    std::vector<unsigned char> hostBlock(60117);
    std::vector<unsigned short> recipeBuffer(1024);
    QMutex hostMutex;
    int result = 0;
    qInstallMessageHandler(takeMessage);
    setCallBack(valueChanged);
    initProperty(hostBlock.data(), 0, recipeBuffer.data(), &result, "1#0#0#3#12", &hostMutex);

    // 3. What the screen shows; again whenever another screen opens.
    QList<KEY_ADDRESS> keys;
    keys << watched("R_W", 100, 2) << watched("R_D", 102, 2) << watched("M_bit", 20, 1);
    const int requests = addrMerge(keys);
    std::printf("%d requests a cycle\n", requests);

    // 4. The poll loop, for ever in a panel. One call at a time.
    for (int poll = 0; poll < 3; ++poll) {
        if (poll == requests) { // somebody enters a value; it goes out before the next read
            unsigned char value[] = {0xD2, 0x04};
            setData(1, QString::fromLatin1("R_W"), 100, 1, value, 0);
        }
        FRAME_PRO frame = FRAME_PRO();
        if (getSendFrame(&frame) == 0) {
            continue; // nothing to send now: wait a little, poll again
        }
        QByteArray reply = answer(frame);
        QString request;
        const int taken = dealRcvFrame(&reply, &request);
        std::printf("%s: %d\n", request.toLatin1().constData(), taken);
        // 1 taken; 8 bad, the same frame comes again; 2 given up, show the text
    }

    // 5. Show values, any time: they come from the cache, low byte first.
    unsigned char shown[4] = {0, 0, 0, 0};
    getData(1, QString::fromLatin1("R_W"), 100, 2, shown);
    std::printf("R 100 is %d, R 101 is %d\n", shown[0] + 256 * shown[1], shown[2] + 256 * shown[3]);

    // 6. Unload. Texts that the driver handed out stay valid.
    dlclose(library);
    return changes == 6 && shown[0] + 256 * shown[1] == 1234 ? 0 : 1;
}
