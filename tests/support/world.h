// The world around the driver that unit tests need: a host that records what it is told.
#ifndef DOV417_TESTS_WORLD_H
#define DOV417_TESTS_WORLD_H

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

#include "intf.h"
#include "made_records.h"
#include "protocol.h"

// One call of the host's value-change function.
struct Notice {
    int tag;
    int station;
    std::string name;
    int address;
};
bool operator==(const Notice& a, const Notice& b);
std::ostream& operator<<(std::ostream& out, const Notice& notice);
using Notices = std::vector<Notice>;

extern const std::string cyclicRead; // the frame of a read of "R_W" 100, as poll() gives it
// What a controller answers to a frame: zeros for a read, the echo for a write, nothing where none
// is awaited.
QByteArray goodReplyTo(const FRAME_PRO& frame);

// The two hand-overs that take their argument by reference.
int ask(KEY_ADDRESS wanted, int kind = 3);
int setRecipe(QVector<_RCP_VAR_PRO> records);

// The host block's bytes that ask for a recipe transfer.
enum {
    downloadFlag = 60115,
    uploadFlag = 60116
};

// Collects what goes to the debug message stream while it lives, one entry a line, without a
// trailing blank (Qt 4 leaves one). `onFirst` is done when the first one comes, from within the
// call of the driver that wrote it.
class DebugLines {
public:
    explicit DebugLines(std::function<void()> onFirst = nullptr);
    ~DebugLines();
    const std::vector<std::string>& lines() const;
};

// A driver fresh from initialisation, and its host.
class DriverTest : public ::testing::Test {
protected:
    DriverTest();
    ~DriverTest() override;

    // property: tag # cache only # spare # retry limit # merge gap. The default tag is 7, so that a
    // forgotten tag shows.
    void configure(const char* property = "7#0#0#3#10");

    // What the host was told since the last call.
    Notices notices();

    // Does this within every later value-change callback, after the notice was recorded; an empty
    // action ends it.
    void whenTold(std::function<void(const Notice&)> action);

    // Hands a plan to the driver: watches the addresses.
    int plan(const QList<KEY_ADDRESS>& keys);

    // Entries 0 to count - 1: "R_W" 1000, 1001, ... of station 1, length 1, kind 1.
    static void fillConditionList(int count);

    // One poll: the frame as hex, "" when there is nothing to send.
    std::string poll();
    FRAME_PRO polled; // the frame of the last poll() that had one

    // One poll, answered as a controller would.
    std::string exchange();

    // One poll that must have a frame; its answer, without CRC.
    int answer(const char* bytes);

    // Hands a reply in; errorText() is the text that came with it.
    int reply(const QByteArray& bytes);
    std::string errorText() const;

    // Hands empty replies in until the request is given up; how many it took, -1 for too many.
    int abandon();

    // Index of a unit's record without creating it, -1 where there is none.
    static int unitIndex(int station, const char* area, int address);
    // The record; fails the test where there is none.
    static _DATA_ unit(int station, const char* area, int address);

    // The two bytes of a unit of station 1 as the controller sent them, as hex.
    static std::string device(const char* area, int address);

    // Bytes that intf_getData copies, as hex.
    static std::string read(const char* regName, int address, int length, int station = 1);
    // intf_setData with bytes written as hex ("34 12" for the word 0x1234, "01" for a set bit).
    static int write(const char* regName, int address, int length, const char* bytes,
                     int station = 1, int kind = 2);

    std::vector<unsigned char> hostBlock;
    std::vector<unsigned short> recipeBuffer;
    QMutex hostMutex;

private:
    QString errorText_;
};

#endif
