// The mistakes that Modbus software has shipped, each as a test that it cannot happen here.
#include <limits>

#include "link/send_scheduling.h"
#include "protocol/address_text.h"
#include "world.h"

namespace {

class BugClasses : public DriverTest {
protected:
    ~BugClasses() override
    {
        atCall = nullptr;
    }

    static void onChange(int, int, QString& regName, int address)
    {
        ++calls;
        if (atCall != nullptr) {
            atCall(regName, address);
        }
    }

    void answerFromWithin(void (*deed)(QString&, int))
    {
        calls = 0;
        atCall = deed;
        intf_setAddrValueChangeCallBack(onChange);
    }

    static int calls;
    static void (*atCall)(QString&, int);
};

int BugClasses::calls = 0;
void (*BugClasses::atCall)(QString&, int) = nullptr;

// ---- count against buffer: the number in a frame and the bytes that are there ------------------

// CVE-2019-14462, CVE-2019-14463: a write whose count says more than its bytes hold.
TEST_F(BugClasses, CountInAWriteNeverExceedsItsBytes)
{
    for (int length : {1, 2, 10, 123, 124, 246, 507}) {
        driver.sendList.clear();
        VARIABLE words = request("R_W", 0, length);
        getWriteFrame(words);
        ASSERT_EQ(driver.sendList.size(), 1) << length;
        const FRAME_PRO& frame = driver.sendList.at(0);
        const int quantity = frame.frame[4] * 256 + frame.frame[5];
        if (length > 1) {
            EXPECT_EQ(quantity, length);
            EXPECT_EQ(frame.sendLength, 9 + 2 * length);
        } else {
            EXPECT_EQ(frame.sendLength, 8);
        }
        EXPECT_LE(frame.sendLength, 1024);
    }
}

TEST_F(BugClasses, WriteThatDoesNotFitItsBufferIsNotFramed)
{
    for (const char* regName : {"R_W", "R_D", "M_W", "T"}) {
        for (int length : {508, 512, 513, 1024, 65536, std::numeric_limits<int>::max()}) {
            driver.sendList.clear();
            VARIABLE words = request(regName, 0, length);
            getWriteFrame(words);
            EXPECT_TRUE(driver.sendList.isEmpty()) << regName << ' ' << length;
        }
    }
    for (const char* regName : {"Q_bit", "R_bit"}) {
        for (int length : {1025, 65536, std::numeric_limits<int>::max()}) {
            driver.sendList.clear();
            VARIABLE bits = request(regName, 0, length);
            getWriteFrame(bits);
            EXPECT_TRUE(driver.sendList.isEmpty()) << regName << ' ' << length;
        }
    }
}

// CVE-2023-26793: a reply whose own byte count is believed.
TEST_F(BugClasses, ByteCountInAReplyIsNotBelieved)
{
    plan({key("R_W", 0, 2)});
    for (int count = 0; count <= 255; ++count) {
        poll();
        QByteArray lying = hex("01 03 00 12 34 56 78");
        lying[2] = static_cast<char>(count);
        ASSERT_EQ(reply(withCrc(lying)), 1);
        ASSERT_EQ(read("R_W", 0, 4), "34 12 78 56 00 00 00 00") << count;
        ASSERT_EQ(driver.dataAreas.size(), 4);
    }
}

// CVE-2024-10918: a reply that is longer than what was asked for.
TEST_F(BugClasses, ReplyLongerThanAskedForIsNotCopied)
{
    configure("7#0#0#1000000#10");
    plan({key("R_W", 0, 1)});
    poll();
    for (int words : {2, 125, 126, 127, 128, 500, 30000}) {
        const QByteArray longer = hex(("0103FE" + repeated("AAAA", words)).c_str());
        ASSERT_EQ(reply(withCrc(longer)), 8) << words;
    }
    EXPECT_EQ(read("R_W", 0, 2), "00 00 00 00");
    EXPECT_EQ(frameHex(polled), "01 03 05 00 00 01 84 C6");
}

TEST_F(BugClasses, PreReadLongerThanTheWriteBackIsNotCopiedIntoIt)
{
    write("R_bit", 0, 1, "01");
    poll();
    ASSERT_EQ(driver.sendList.size(), 2);
    driver.sendList[0].dataCount = 2000; // a frame that promises more than the next one holds
    driver.sendList[0].replyLength = 2005;
    const QByteArray longer = withCrc(QByteArray(2003, '\x55'));
    EXPECT_EQ(reply(longer), 1);
    EXPECT_EQ(poll(), "01 10 05 00 00 01 02 00 01 32 90");
}

// ---- one past the maximum ---------------------------------------------------------------------

TEST_F(BugClasses, RepliesAroundTheLargestFrameAreTakenOnlyAtTheirExactLength)
{
    struct Row {
        int words;
        int right;
    };
    for (const Row& row : {Row{125, 255}, Row{126, 257}, Row{127, 259}, Row{128, 261}}) {
        configure("7#0#0#1000000#10");
        plan({key("R_W", 0, row.words)});
        poll();
        for (int size : {250, 253, 254, 255, 256, 257, 258, 259, 260, 261, 262, 263, 512}) {
            const QByteArray filled = withCrc(QByteArray(size - 2, '\x11'));
            ASSERT_EQ(reply(filled), size == row.right ? 1 : 8) << row.words << ' ' << size;
            poll();
        }
        EXPECT_EQ(read("R_W", row.words - 1, 2), "11 11 00 00");
        EXPECT_EQ(driver.dataAreas.size(), row.words + 1);
    }
}

TEST_F(BugClasses, RequestOneUnitAboveTheLargestIsCut)
{
    plan({key("R_W", 0, 129)});
    EXPECT_EQ(summary(driver.readList), (std::vector<std::string>{"1/R_W:0+128", "1/R_W:128+1"}));
}

TEST_F(BugClasses, LargestWriteEndsAtTheEdgeOfItsBuffer)
{
    VARIABLE words = request("R_W", 0, 507, 1, std::vector<int>(1024, 0x5A));
    getWriteFrame(words);
    ASSERT_EQ(driver.sendList.size(), 1);
    EXPECT_EQ(driver.sendList.at(0).sendLength, 1023);
    EXPECT_EQ(driver.sendList.at(0).frame[1020], 0x5A);
    EXPECT_EQ(driver.sendList.at(0).frame[1023], 0x00);
}

TEST_F(BugClasses, WriteOfMoreThanARecordHoldsIsRefusedWhole)
{
    const std::string tooLong = repeated("01", 2000);
    EXPECT_EQ(write("R_W", 0, 512, tooLong.c_str()), 1);
    EXPECT_EQ(write("M_bit", 0, 1024, tooLong.c_str()), 1);
    const int units = static_cast<int>(driver.dataAreas.size());
    const int queued = static_cast<int>(driver.writeList.size());
    EXPECT_EQ(write("R_W", 1000, 513, tooLong.c_str()), -1);
    EXPECT_EQ(write("M_bit", 0, 1025, tooLong.c_str()), -1);
    EXPECT_EQ(driver.dataAreas.size(), units);
    EXPECT_EQ(driver.writeList.size(), queued);
}

// ---- sums of 8-bit counts that wrap -----------------------------------------------------------

// 128 registers are 256 bytes: the count byte says 0 and the frame is whole all the same.
TEST_F(BugClasses, ByteCountThatWrapsShortensNoFrame)
{
    struct Row {
        int words;
        int countByte;
    };
    for (const Row& row : {Row{127, 254}, Row{128, 0}, Row{129, 2}, Row{255, 254}, Row{256, 0}}) {
        driver.sendList.clear();
        VARIABLE words = request("R_W", 0, row.words, 1, std::vector<int>(1024, 0x5A));
        getWriteFrame(words);
        ASSERT_EQ(driver.sendList.size(), 1);
        const FRAME_PRO& frame = driver.sendList.at(0);
        EXPECT_EQ(frame.sendLength, 9 + 2 * row.words);
        EXPECT_EQ(frame.frame[6], row.countByte);
        EXPECT_EQ(frame.frame[7 + 2 * row.words - 1], 0x5A);
    }
}

TEST_F(BugClasses, CoilsPastTheCountByteStayInTheirBytes)
{
    VARIABLE bits = request("Q_bit", 0, 1024, 1, std::vector<int>(1024, 1));
    getWriteFrame(bits);
    ASSERT_EQ(driver.sendList.size(), 1);
    EXPECT_EQ(driver.sendList.at(0).sendLength, 9 + 128);
    EXPECT_EQ(driver.sendList.at(0).frame[7 + 127], 0xFF);
    EXPECT_EQ(driver.sendList.at(0).frame[6], 128);
}

// ---- range arithmetic -------------------------------------------------------------------------

// CVE-2022-0367: an address below the mapping passes the check and indexes in front of it.
TEST_F(BugClasses, AddressInFrontOfAnAreaIsNotInRange)
{
    int address = 0;
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("-1"), &address, 0, 1, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("-2147483648"), &address, 0, 1, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("M_bit"), name("0.-2"), &address, -1, 1, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("M_bit"), name("-1.0"), &address, -1, 1, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("M_bit"), name("0.-1"), &address, -1, 1, 0), 4);
    EXPECT_EQ(intf_checkAddrValidity(name("T"), name("-1"), &address, 200, 1), 2);
}

TEST_F(BugClasses, SumOfAddressAndLengthDoesNotWrapIntoTheRange)
{
    const int largest = std::numeric_limits<int>::max();
    int address = 0;
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("1"), &address, 0, largest, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("2147483647"), &address, 0, 1, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("2147483647"), &address, 0, largest, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("M_bit"), name("134217727.15"), &address, -1, largest, 0), 2);
}

TEST_F(BugClasses, AddressesAtTheEndsOf32BitsAreTakenLikeAnyOther)
{
    const int smallest = std::numeric_limits<int>::min();
    const int largest = std::numeric_limits<int>::max();
    for (const char* regName : {"I_bit", "R_bit", "M_W", "R_W", "R_D", "T"}) {
        for (int address : {smallest, smallest + 1, -17, -16, -1, largest - 1, largest}) {
            configure();
            plan({key(regName, address, 3)});
            EXPECT_EQ(write(regName, address, 3, "01 01 01 01 01 01"), 1);
            read(regName, address, 3);
            KEY_ADDRESS asked = key(regName, address, 3);
            EXPECT_EQ(intf_addConditionRead(asked, 3), 1);
            for (int i = 0; i < 12; ++i) {
                poll();
                reply(QByteArray(polled.replyLength > 0 ? polled.replyLength : 0, '\x33'));
            }
            EXPECT_LE(driver.dataAreas.size(), 16);
        }
    }
}

TEST_F(BugClasses, PlanOfAKeyThatEndsPast32BitsHoldsNoRequestAbove128Units)
{
    plan({key("R_W", std::numeric_limits<int>::max() - 10, 300), key("R_W", 0, 5)});
    for (int i = 0; i < driver.readList.size(); ++i) {
        EXPECT_LE(driver.readList.at(i).length, 128);
    }
}

// ---- pointers kept too long -------------------------------------------------------------------

void reinitialise(QString&, int)
{
    intf_initProperty(nullptr, 0, nullptr, nullptr, "7#0#0#3#10", nullptr);
}

TEST_F(BugClasses, ReinitialisationFromWithinAReplyIsTheLastWord)
{
    plan({key("R_W", 0, 100)});
    poll();
    answerFromWithin(reinitialise);
    EXPECT_EQ(reply(withCrc(("0103C8" + repeated("1234", 100)).c_str())), 1);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_TRUE(driver.sendList.isEmpty());
    EXPECT_TRUE(driver.readList.isEmpty());
}

TEST_F(BugClasses, ReinitialisationFromWithinAWriteIsTheLastWord)
{
    for (const char* regName : {"R_W", "R_D", "M_bit", "R_bit"}) {
        configure();
        plan({key(regName, 0, 64)});
        answerFromWithin(reinitialise);
        EXPECT_EQ(write(regName, 0, 64, repeated("01", 128).c_str()), 1);
        EXPECT_EQ(calls, 1) << regName;
        EXPECT_TRUE(driver.dataAreas.isEmpty()) << regName;
        EXPECT_TRUE(driver.writeList.isEmpty()) << regName;
    }
}

TEST_F(BugClasses, ReinitialisationFromWithinASettledWriteIsTheLastWord)
{
    for (const char* regName : {"R_W", "R_D", "M_bit"}) {
        intf_setAddrValueChangeCallBack(nullptr);
        configure("7#0#0#1#10");
        plan({key(regName, 0, 10)});
        write(regName, 0, 10, repeated("01", 20).c_str());
        poll();
        answerFromWithin(reinitialise);
        EXPECT_EQ(reply(QByteArray()), 2);
        EXPECT_EQ(calls, 1) << regName;
        EXPECT_TRUE(driver.dataAreas.isEmpty()) << regName;
        EXPECT_EQ(driver.commFailed, 0) << "the reset cleared it last";
    }
}

TEST_F(BugClasses, ReinitialisationFromWithinARecipeUploadLeavesTheOldBufferAlone)
{
    setRecipe({recipeRecord(7, "R_W", 0, 10, 0)});
    hostBlock[60116] = 1;
    poll();
    answerFromWithin(reinitialise);
    EXPECT_EQ(reply(withCrc(("010314" + repeated("1234", 10)).c_str())), 1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(recipeBuffer[0], 0x1234);
    EXPECT_EQ(recipeBuffer[1], 0);
}

void planAndWrite(QString& regName, int address)
{
    regName = QString::fromLatin1("changed by the host");
    static int depth = 0;
    if (depth > 0) {
        return;
    }
    ++depth;
    DebugLines quiet;
    QList<KEY_ADDRESS> keys = {key("M_W", 0, 100), key("R_W", 0, 8)};
    intf_addrMerge(keys);
    setRecipe({recipeRecord(7, "C", 0, 4, 0)});
    unsigned char data[64] = {1, 2, 3};
    intf_setData(1, name("R_W"), address, 8, data, 2);
    ask(key("T", 0, 4));
    FRAME_PRO frame = FRAME_PRO();
    intf_getSendFrame(&frame);
    QByteArray nothing;
    QString errorText;
    intf_dealRcvFrame(&nothing, &errorText);
    --depth;
}

// A host should leave this to a later moment; one that does not must still find its memory whole.
TEST_F(BugClasses, EveryCallFromWithinTheCallbackLeavesMemoryWhole)
{
    plan({key("R_W", 0, 8), key("R_bit", 0, 128), key("M_W", 0, 4)});
    answerFromWithin(planAndWrite);
    write("R_W", 0, 8, repeated("11", 16).c_str());
    write("R_bit", 3, 9, repeated("01", 9).c_str());
    for (int i = 0; i < 200; ++i) {
        poll();
        const int length = polled.replyLength;
        reply(length > 2 && i % 3 != 0 ? withCrc(QByteArray(length - 2, static_cast<char>(i)))
                                       : QByteArray());
    }
    EXPECT_GT(calls, 0);
    EXPECT_LE(driver.writeList.size(), 513);
    EXPECT_LE(driver.conditionList.size(), 513);
}

QByteArray receiveBuffer;

void reuseReceiveBuffer(QString&, int)
{
    receiveBuffer.clear();
    receiveBuffer.squeeze();
}

// A host has one receive buffer, and what it does when a value changes may end in that buffer.
TEST_F(BugClasses, ReplyWhoseBufferTheCallbackEmptiesIsDecodedToItsEnd)
{
    plan({key("R_W", 0, 3)});
    poll();
    answerFromWithin(reuseReceiveBuffer);
    receiveBuffer = withCrc("01 03 06 12 34 56 78 9A BC");
    receiveBuffer.detach();
    QString errorText;
    EXPECT_EQ(intf_dealRcvFrame(&receiveBuffer, &errorText), 1);
    EXPECT_EQ(read("R_W", 0, 3), "34 12 78 56 BC 9A");
    EXPECT_EQ(calls, 3);
}

TEST_F(BugClasses, ListsChangedFromOutsideBetweenPollsAndRepliesAreSeenAsTheyAre)
{
    plan({key("R_W", 0, 2)});
    poll();
    driver.dataAreas.clear();
    EXPECT_EQ(reply(withCrc("01 03 04 12 34 56 78")), 1);
    EXPECT_EQ(read("R_W", 0, 2), "34 12 78 56");
    poll();
    driver.readList.clear();
    driver.currentVars.clear();
    EXPECT_EQ(reply(withCrc("01 03 04 00 01 00 02")), 1);
    EXPECT_EQ(read("R_W", 0, 2), "01 00 02 00");
    EXPECT_EQ(poll(), "");
}

// ---- text without end -------------------------------------------------------------------------

// CVE-2022-1068: an address text that is longer than anybody thought of.
TEST_F(BugClasses, AddressTextOfAMillionCharactersIsJustABadText)
{
    for (const char* each : {"1", "9", "0.", ".", "-", " ", "x", "1.1"}) {
        QString endless = QString::fromLatin1(each).repeated(1000000);
        int address = 77;
        EXPECT_EQ(intf_checkAddr(name("R_W"), endless, &address, 0, 1, 0), 4) << each;
        address = 77;
        EXPECT_EQ(intf_checkAddr(name("M_bit"), endless, &address, -1, 1, 0), 4) << each;
        EXPECT_EQ(address, 77);
    }
    int address = 0;
    const QString zeros = QString::fromLatin1("0").repeated(1000000);
    EXPECT_EQ(intf_checkAddr(name("R_W"), zeros, &address, 0, 1, 0), 0);
    EXPECT_EQ(address, 0);
}

TEST_F(BugClasses, RegisterNameOfAMillionCharactersIsUnknown)
{
    const QString endless = QString::fromLatin1("R_W").repeated(1000000);
    int address = 0;
    unsigned char out[4] = {9, 9, 9, 9};
    EXPECT_EQ(getIndexFromRegName(endless), -1);
    EXPECT_EQ(intf_checkAddr(endless, name("1"), &address, 0, 1, 0), 3);
    EXPECT_EQ(intf_getData(1, endless, 0, 2, out), -1);
    EXPECT_EQ(intf_setData(1, endless, 0, 2, out, 2), -1);
    EXPECT_EQ(out[0], 9);
}

TEST_F(BugClasses, PropertyTextOfAMillionFieldsCountsAsItsFirstFive)
{
    const std::string endless = "7#0#0#3#10" + repeated("#99999999999", 100000);
    configure(endless.c_str());
    EXPECT_EQ(driver.mergeGap, 10);
    EXPECT_EQ(driver.retryLimit, 3);
    EXPECT_EQ(driver.initDone, 1);
}

// ---- a late reply taken for the next request's ------------------------------------------------

TEST_F(BugClasses, LateReplyOfAnAbandonedReadIsRefusedByAReadOfAnotherLength)
{
    configure("7#0#0#1#0");
    plan({key("R_W", 0, 1), key("R_W", 100, 3)});
    EXPECT_EQ(poll(), "01 03 05 00 00 01 84 C6");
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(poll(), "01 03 05 64 00 03 44 D8");
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 2);
    EXPECT_EQ(read("R_W", 0, 1), "00 00");
    EXPECT_EQ(read("R_W", 100, 3), "00 00 00 00 00 00");
}

TEST_F(BugClasses, LateReplyOfAReadDoesNotPassForTheEchoOfAWrite)
{
    configure("7#0#0#3#0");
    plan({key("R_W", 0, 2)});
    poll();
    write("R_W", 50, 1, "34 12");
    for (int i = 0; i < 3; ++i) {
        reply(QByteArray());
    }
    EXPECT_EQ(poll(), "01 06 05 32 12 34 25 BE");
    EXPECT_EQ(reply(withCrc("01 03 04 12 34 56 78")), 8);
    EXPECT_EQ(driver.writeList.size(), 1);
}

TEST_F(BugClasses, LateReplyAfterAResetIsNobodys)
{
    plan({key("R_W", 0, 1)});
    poll();
    configure();
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 0);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

} // namespace
