// For every kind of frame: the right reply in every wrong length, with every single bit flipped,
// with every wrong CRC byte, and the exceptions. None of them may change anything but the count of
// bad replies, and the right reply is still taken afterwards.
#include <functional>
#include <gmock/gmock.h>

#include "world.h"

namespace {

struct Exchange {
    const char* name;
    std::function<void()> prepare; // what makes the driver ask, besides the plan below
    const char* sent;              // without CRC
    const char* answer;            // without CRC; "" where none is awaited
};

std::ostream& operator<<(std::ostream& out, const Exchange& exchange)
{
    return out << exchange.name;
}

std::string all(const QList<VARIABLE>& list)
{
    return ::testing::PrintToString(summary(list));
}

class BadReplies : public DriverTest, public ::testing::WithParamInterface<Exchange> {
protected:
    // Values in the cache, work of every kind in the lists, and the frame on the line.
    void SetUp() override
    {
        plan({key("R_W", 10, 3), key("R_D", 10, 2), key("M_bit", 32, 32), key("Q_bit", 0, 16),
              key("T", 1, 1), key("R_bit", 32, 32)});
        recipeBuffer[0] = 0x1234;
        recipeBuffer[1] = 0x5678;
        driver.readList.clear();
        GetParam().prepare();
        setRecipe({recipeRecord(7, "R_W", 200, 2, 0), recipeRecord(7, "R_W", 300, 1, 2)});
        if (GetParam().name == std::string("Download")) {
            hostBlock[downloadFlag] = 1;
        } else if (GetParam().name == std::string("Upload")) {
            hostBlock[uploadFlag] = 1;
        }
        driver.retryLimit = 1000000;
        const std::string sent = poll();
        ASSERT_EQ(sent, GetParam().sent[0] == '\0' ? "" : toHex(withCrc(GetParam().sent)));
        ASSERT_EQ(driver.sendList.isEmpty(), false);
        notices();
        before = state();
    }

    QByteArray answer() const
    {
        return GetParam().answer[0] == '\0' ? QByteArray() : withCrc(GetParam().answer);
    }

    std::string state()
    {
        std::string text_ = all(driver.readList) + all(driver.writeList) +
                            all(driver.conditionList) + all(driver.currentVars);
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_& one = driver.dataAreas.at(i);
            text_ += text(one.area) + std::to_string(one.address) + ":" +
                     toHex(one.deviceValue, 4) + "," + toHex(one.pendingValue, 4) + "," +
                     std::to_string(one.writePending) + "," + std::to_string(one.pendingBits) + ";";
        }
        for (int i = 0; i < driver.sendList.size(); ++i) {
            text_ += frameHex(driver.sendList.at(i));
        }
        text_ += toHex(reinterpret_cast<const unsigned char*>(recipeBuffer.data()), 64);
        for (const int number :
             {driver.sendKind, driver.burstCount, driver.commFailed, driver.recipeIndex,
              driver.frameVarCount, int{hostBlock[downloadFlag]}, int{hostBlock[uploadFlag]}}) {
            text_ += " " + std::to_string(number);
        }
        return text_;
    }

    void expectRefused(const QByteArray& bytes, const std::string& what)
    {
        ++refused;
        ASSERT_EQ(reply(bytes), 8) << what;
        ASSERT_EQ(driver.retryCount, refused) << what;
        ASSERT_EQ(state(), before) << what;
        ASSERT_TRUE(notices().empty()) << what;
    }

    void expectTheRightOneIsTaken()
    {
        EXPECT_EQ(reply(answer()), 1);
        EXPECT_EQ(driver.retryCount, 0);
        EXPECT_NE(state(), before);
    }

    std::string before;
    int refused = 0;
};

TEST_P(BadReplies, OfEveryOtherLengthAreRefused)
{
    const QByteArray right = answer();
    QByteArray longer = right + QByteArray(300, '\0');
    for (int length = 0; length <= 300; ++length) {
        if (length == right.size()) {
            continue;
        }
        expectRefused(longer.left(length), "length " + std::to_string(length));
        if (length >= 2) { // also with a CRC that is right for this length
            expectRefused(withCrc(longer.left(length - 2)),
                          "length " + std::to_string(length) + " with its CRC");
        }
        if (HasFatalFailure()) {
            return;
        }
    }
    expectTheRightOneIsTaken();
}

TEST_P(BadReplies, WithAFlippedBitAreRefused)
{
    const QByteArray right = answer();
    for (int bit = 0; bit < right.size() * 8; ++bit) {
        QByteArray wrong = right;
        wrong[bit / 8] = static_cast<char>(wrong.at(bit / 8) ^ (1 << (bit % 8)));
        expectRefused(wrong, "bit " + std::to_string(bit));
        if (HasFatalFailure()) {
            return;
        }
    }
    expectTheRightOneIsTaken();
}

TEST_P(BadReplies, WithAWrongCrcByteAreRefused)
{
    const QByteArray right = answer();
    for (int change = 1; change < 256 && !right.isEmpty(); ++change) {
        for (const int fromEnd : {1, 2}) {
            QByteArray wrong = right;
            const int place = static_cast<int>(wrong.size()) - fromEnd;
            wrong[place] = static_cast<char>(wrong.at(place) ^ change);
            expectRefused(wrong, "change " + std::to_string(change));
        }
        if (HasFatalFailure()) {
            return;
        }
    }
    expectTheRightOneIsTaken();
}

TEST_P(BadReplies, ThatAreExceptionsAreRefused)
{
    for (int code = 0; code < 256; ++code) {
        QByteArray exception = hex("01 83");
        exception.append(static_cast<char>(code));
        expectRefused(withCrc(exception), "exception " + std::to_string(code));
        if (HasFatalFailure()) {
            return;
        }
    }
    expectTheRightOneIsTaken();
}

TEST_P(BadReplies, ThatAreTheEchoOfTheRequestAreRefusedUnlessThatIsTheAnswer)
{
    const QByteArray echo(reinterpret_cast<const char*>(polled.frame), polled.sendLength);
    if (toHex(echo) != toHex(answer())) {
        expectRefused(echo, "echo");
    }
    expectTheRightOneIsTaken();
}

void readPlan(const char* regName, int address, int length)
{
    driver.readList << request(regName, address, length);
}

const Exchange exchanges[] = {
    {"CoilRead", [] { readPlan("M_W", 2, 2); }, "01 01 10 20 00 20", "01 01 04 12 34 56 78"},
    {"RegisterRead", [] { readPlan("R_W", 10, 3); }, "01 03 05 0A 00 03",
     "01 03 06 12 34 56 78 9A BC"},
    {"TimerRead", [] { readPlan("T", 1, 1); }, "01 03 01 81 00 01", "01 03 02 12 34"},
    {"ConditionRead", [] { ask(key("R_W", 11, 1)); }, "01 03 05 0B 00 01", "01 03 02 12 34"},
    {"CoilWrite",
     [] {
         unsigned char on = 1;
         DebugLines quiet;
         intf_setData(1, name("Q_bit"), 5, 1, &on, 2);
     },
     "01 05 08 05 FF 00", "01 05 08 05 FF 00"},
    {"RegisterWrite",
     [] {
         unsigned char value[] = {0x34, 0x12};
         DebugLines quiet;
         intf_setData(1, name("R_W"), 10, 1, value, 2);
     },
     "01 06 05 0A 12 34", "01 06 05 0A 12 34"},
    {"CoilsWrite",
     [] {
         unsigned char value[] = {0x34, 0x12};
         DebugLines quiet;
         intf_setData(1, name("M_W"), 2, 1, value, 2);
     },
     "01 0F 10 20 00 10 02 34 12", "01 0F 10 20 00 10"},
    {"RegistersWrite",
     [] {
         unsigned char value[] = {0x34, 0x12, 0x78, 0x56};
         DebugLines quiet;
         intf_setData(1, name("R_D"), 10, 2, value, 2);
     },
     "01 10 05 0A 00 02 04 12 34 56 78", "01 10 05 0A 00 02"},
    {"PreRead",
     [] {
         unsigned char on = 1;
         DebugLines quiet;
         intf_setData(1, name("R_bit"), 35, 1, &on, 2);
     },
     "01 03 05 02 00 01", "01 03 02 12 34"},
    {"Download", [] {}, "01 10 05 C8 00 02 04 12 34 56 78", "01 10 05 C8 00 02"},
    {"Upload", [] {}, "01 03 05 C8 00 02", "01 03 04 9A BC DE F0"},
};

INSTANTIATE_TEST_SUITE_P(ToA, BadReplies, ::testing::ValuesIn(exchanges),
                         [](const ::testing::TestParamInfo<Exchange>& exchange) {
                             return std::string(exchange.param.name);
                         });

// Frames that await nothing: anything that comes is refused.

class UnawaitedReplies : public DriverTest {
protected:
    void expectEverythingIsRefused()
    {
        driver.retryLimit = 1000000;
        for (int length = 1; length <= 300; ++length) {
            EXPECT_EQ(reply(QByteArray(length, '\0')), 8) << length;
            EXPECT_EQ(reply(withCrc(QByteArray(length, '\x11'))), 8) << length;
        }
        EXPECT_EQ(driver.sendList.size(), 1);
        EXPECT_EQ(reply(QByteArray()), 1);
    }
};

TEST_F(UnawaitedReplies, ToABroadcastAreRefused)
{
    write("R_W", 10, 1, "34 12", 0);
    poll();
    expectEverythingIsRefused();
    EXPECT_TRUE(driver.writeList.isEmpty());
}

TEST_F(UnawaitedReplies, ToAHandshakeAreRefused)
{
    driver.handshakeRequest = 1;
    poll();
    expectEverythingIsRefused();
}

TEST_F(UnawaitedReplies, ToTheWriteBackOfABitWriteLeaveItAsItWasPatched)
{
    write("R_bit", 35, 1, "01");
    poll();
    reply(withCrc("01 03 02 12 34"));
    const std::string patched = poll();
    EXPECT_EQ(patched, frame("01 10 05 02 00 01 02 12 3C"));
    driver.retryLimit = 1000000;
    for (int length = 0; length <= 300; ++length) {
        if (length != 8) {
            EXPECT_EQ(reply(QByteArray(length, '\0')), 8) << length;
        }
    }
    EXPECT_EQ(reply(withCrc("01 03 02 00 00")), 8); // the late answer to the pre-read
    EXPECT_EQ(poll(), patched);
    EXPECT_EQ(reply(withCrc("01 10 05 02 00 01")), 1);
    EXPECT_TRUE(driver.writeList.isEmpty());
}

class LateReplies : public DriverTest {};

TEST_F(LateReplies, LateReplyOfAnAbandonedReadIsRefusedByAReadOfAnotherLength)
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

TEST_F(LateReplies, LateReplyOfAReadDoesNotPassForTheEchoOfAWrite)
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

TEST_F(LateReplies, LateReplyAfterAResetIsNobodys)
{
    plan({key("R_W", 0, 1)});
    poll();
    configure();
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 0);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

} // namespace
