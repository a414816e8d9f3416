// The mistakes that Modbus software has shipped, each as a test that it cannot happen here.
#include <limits>

#include "link/send_scheduling.h"
#include "protocol/address_text.h"
#include "world.h"

namespace {

class BugClasses : public DriverTest {};

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

} // namespace
