// Every reply that a line can make of it, for every kind of frame that the driver sends.
#include "every_reply_kinds.h"

namespace {

class EveryReply : public DriverTest, public ::testing::WithParamInterface<LineKind> {
protected:
    enum {
        accepted = 1,
        abandoned = 2,
        bad = 8
    };

    void bringOnTheLine(const char* property)
    {
        const LineKind& kind = GetParam();
        configure(property);
        QList<KEY_ADDRESS> keys;
        for (const Range& range : kind.watched) {
            keys.append(key(range.regName, range.address, range.length, range.station));
        }
        plan(keys);
        for (const RangeBytes& each : kind.writes) {
            const Range& range = each.range;
            ASSERT_EQ(write(range.regName, range.address, range.length, each.bytes.c_str(),
                            range.station),
                      1);
        }
        for (const Range& range : kind.conditions) {
            KEY_ADDRESS asked = key(range.regName, range.address, range.length, range.station);
            ASSERT_EQ(intf_addConditionRead(asked, 3), 1);
        }
        prepareRecipe();
        poll();
        if (!kind.earlierReply.empty()) {
            ASSERT_EQ(reply(withCrc(kind.earlierReply.c_str())), accepted);
            poll();
        }
        ASSERT_EQ(frameHex(polled), kind.frame);
        notices();
        expectValues(kind.before);
    }

    void prepareRecipe()
    {
        const LineKind& kind = GetParam();
        QVector<_RCP_VAR_PRO> records;
        for (const Range& range : kind.recipe) {
            records.append(recipeRecord(7, range.regName, range.address, range.length, 3));
        }
        intf_setRcpAddress(records);
        driver.recipeIndex = 0;
        recipeBuffer[3] = 0x0001;
        recipeBuffer[4] = 0x5678;
        if (kind.recipeFlag != noRecipe) {
            hostBlock[static_cast<std::size_t>(kind.recipeFlag)] = 1;
        }
    }

    QByteArray rightReply() const
    {
        const QByteArray bytes = hex(GetParam().reply.c_str());
        return bytes.isEmpty() ? bytes : withCrc(bytes);
    }

    void expectValues(const std::vector<RangeBytes>& values)
    {
        for (const RangeBytes& value : values) {
            const Range& range = value.range;
            EXPECT_EQ(read(range.regName, range.address, range.length, range.station), value.bytes)
                << range.regName << ' ' << range.address;
        }
    }

    // All of the driver and of its host's memory that a refused reply must leave alone.
    std::string state() const
    {
        std::string all;
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_& unit = driver.dataAreas.at(i);
            all += text(unit.area);
            for (long long number :
                 {1LL * unit.writePending, 1LL * unit.pendingBits, 1LL * unit.viewFlags,
                  1LL * unit.bitMonitor, 1LL * unit.station, 1LL * unit.address}) {
                all += std::to_string(number) + ' ';
            }
            all.append(reinterpret_cast<const char*>(unit.deviceValue), 4);
            all.append(reinterpret_cast<const char*>(unit.pendingValue), 4);
        }
        for (int i = 0; i < driver.sendList.size(); ++i) {
            all += frameHex(driver.sendList.at(i)) + '\n';
        }
        for (const auto* list : {&driver.readList, &driver.writeList, &driver.conditionList}) {
            for (const std::string& each : summary(*list)) {
                all += each + ' ';
            }
            all += '\n';
        }
        for (int number : {driver.sendKind, driver.burstCount, driver.recipeIndex,
                           driver.commFailed, int{hostBlock[60115]}, int{hostBlock[60116]}}) {
            all += std::to_string(number) + ' ';
        }
        all.append(reinterpret_cast<const char*>(recipeBuffer.data()), 2 * recipeBuffer.size());
        return all;
    }

    // Refused, told to nobody, nothing changed.
    void expectRefused(const QByteArray& bytes, const std::string& before)
    {
        ASSERT_EQ(reply(bytes), bad) << toHex(bytes);
        std::string expectedText = GetParam().errorText;
        if (bytes.size() == 10 && bytes.at(5) != 0) {
            expectedText +=
                ",error code:" + std::to_string(int{static_cast<unsigned char>(bytes.at(5))});
        }
        ASSERT_EQ(errorText(), expectedText) << toHex(bytes);
        ASSERT_TRUE(notices().empty()) << toHex(bytes);
        ASSERT_TRUE(state() == before) << toHex(bytes);
    }

    void expectAccepted(const QByteArray& bytes)
    {
        const LineKind& kind = GetParam();
        ASSERT_EQ(reply(bytes), accepted) << toHex(bytes);
        EXPECT_EQ(errorText(), kind.errorText);
        EXPECT_EQ(notices(), kind.acceptedNotices);
        EXPECT_EQ(driver.commFailed, 0);
        EXPECT_EQ(driver.retryCount, 0);
        expectValues(kind.accepted);
        EXPECT_EQ(poll(), kind.nextFrame);
    }

    const char* const patient = "7#0#0#1000000#10";
};

TEST_P(EveryReply, ThatIsRightIsAcceptedAndTakesEffect)
{
    bringOnTheLine(patient);
    expectAccepted(rightReply());
}

TEST_P(EveryReply, OfAnyOtherLengthUpTo300IsRefused)
{
    bringOnTheLine(patient);
    const std::string before = state();
    for (int length = 0; length <= 300 && !HasFatalFailure(); ++length) {
        if (length == rightReply().size()) {
            continue;
        }
        const QByteArray cut = rightReply().leftJustified(length, '\x5A', true);
        expectRefused(cut, before);
        if (length >= 2) { // a CRC that fits: the length alone decides
            expectRefused(withCrc(cut.left(length - 2)), before);
        }
        expectRefused(QByteArray(length, '\0'), before);
        expectRefused(QByteArray(length, '\xFF'), before);
    }
    expectAccepted(rightReply());
}

TEST_P(EveryReply, WithOneBitFlippedIsRefused)
{
    bringOnTheLine(patient);
    const std::string before = state();
    for (int bit = 0; bit < 8 * rightReply().size() && !HasFatalFailure(); ++bit) {
        QByteArray flipped = rightReply();
        flipped[bit / 8] = static_cast<char>(flipped.at(bit / 8) ^ (1 << (bit % 8)));
        expectRefused(flipped, before);
    }
    expectAccepted(rightReply());
}

TEST_P(EveryReply, ThatIsAnExceptionIsRefusedWhateverItsCode)
{
    bringOnTheLine(patient);
    const std::string before = state();
    for (int code = 0; code <= 255 && !HasFatalFailure(); ++code) {
        QByteArray exception = hex(GetParam().frame.c_str()).left(2);
        exception[1] = static_cast<char>(exception.at(1) | '\x80');
        exception.append(static_cast<char>(code));
        expectRefused(withCrc(exception), before);
    }
    expectAccepted(rightReply());
}

// Length and CRC decide, nothing else: controllers of this family answer under another station.
TEST_P(EveryReply, FromAnotherStationOrForAnotherFunctionCountsByItsLength)
{
    for (int place = 0; place < 2; ++place) {
        for (int byte = 0; byte <= 255 && !HasFailure(); ++byte) {
            bringOnTheLine(patient);
            if (rightReply().isEmpty()) {
                QByteArray other = hex("01 06 05 64 12 34");
                other[place] = static_cast<char>(byte);
                expectRefused(withCrc(other), state());
            } else {
                QByteArray other = hex(GetParam().reply.c_str());
                other[place] = static_cast<char>(byte);
                expectAccepted(withCrc(other));
            }
        }
    }
}

TEST_P(EveryReply, ToAnotherFrameIsRefusedUnlessItIsAsLong)
{
    for (const LineKind& other : lineKinds()) {
        SCOPED_TRACE(other.name);
        const QByteArray late = other.reply.empty() ? QByteArray() : withCrc(other.reply.c_str());
        bringOnTheLine(patient);
        if (late.size() != rightReply().size()) {
            expectRefused(late, state());
            expectAccepted(rightReply());
        } else if (driver.sendList.at(0).dataCount == 0) {
            expectAccepted(late); // an echo carries nothing that would be looked at
        } else {
            EXPECT_EQ(reply(late), accepted);
            EXPECT_EQ(errorText(), GetParam().errorText);
        }
        if (HasFailure()) {
            return;
        }
    }
}

TEST_P(EveryReply, RefusedUpToTheRetryLimitGivesTheRequestUp)
{
    const LineKind& kind = GetParam();
    for (int limit : {-1, 0, 1, 2, 3, 10}) {
        SCOPED_TRACE(limit);
        bringOnTheLine(("7#0#0#" + std::to_string(limit) + "#10").c_str());
        // A broadcast awaits nothing, so for it a byte is wrong; else no answer at all is.
        const QByteArray wrong = rightReply().isEmpty() ? hex("00") : QByteArray();
        for (int i = 1; i < limit; ++i) {
            ASSERT_EQ(reply(wrong), bad);
            ASSERT_EQ(poll(), kind.frame);
        }
        ASSERT_EQ(reply(wrong), abandoned);
        EXPECT_EQ(errorText(), kind.errorText);
        EXPECT_EQ(notices(), kind.abandonedNotices);
        EXPECT_EQ(driver.commFailed, 1);
        EXPECT_EQ(driver.retryCount, 0);
        EXPECT_TRUE(driver.sendList.isEmpty());
        EXPECT_TRUE(driver.writeList.isEmpty());
        EXPECT_TRUE(driver.conditionList.isEmpty());
        EXPECT_EQ(hostBlock[downloadFlag], 0);
        EXPECT_EQ(hostBlock[uploadFlag], 0);
        expectValues(kind.abandoned);
        EXPECT_EQ(poll(), kind.frameAfterAbandoning);
    }
}

std::string kindName(const ::testing::TestParamInfo<LineKind>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(To, EveryReply, ::testing::ValuesIn(lineKinds()), kindName);

class ReplyOutOfTurn : public DriverTest {};

TEST_F(ReplyOutOfTurn, WithoutAnOutstandingFrameChangesNothing)
{
    plan({key("R_W", 10, 1)});
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 0);
    EXPECT_EQ(errorText(), "");
    EXPECT_EQ(read("R_W", 10, 1), "00 00");
    EXPECT_TRUE(notices().empty());
}

TEST_F(ReplyOutOfTurn, ToAHandshakeMustBeEmpty)
{
    configure("7#0#0#1000000#10");
    driver.handshakeRequest = 1;
    FRAME_PRO frame = FRAME_PRO();
    ASSERT_EQ(intf_getSendFrame(&frame), 1);
    EXPECT_EQ(frame.sendLength, 0);
    for (int length = 1; length <= 300; ++length) {
        ASSERT_EQ(reply(withCrc(QByteArray(length, '\x11'))), 8);
        ASSERT_EQ(reply(QByteArray(length, '\0')), 8);
    }
    EXPECT_EQ(reply(QByteArray()), 1);
    EXPECT_EQ(errorText(), "0#0(0)");
    EXPECT_TRUE(notices().empty());
}

// Nothing in the bytes of a reply names the request that it answers; a host throws late bytes away
// before it transmits. What the driver does with one that slips through is at least certain.
TEST_F(ReplyOutOfTurn, OfTheSameLengthIsTakenForTheRequestOnTheLine)
{
    plan({key("R_W", 10, 1), key("R_W", 50, 1)});
    EXPECT_EQ(poll(), "01 03 05 0A 00 01 A4 C4");
    EXPECT_EQ(reply(QByteArray()), 8);
    EXPECT_EQ(reply(QByteArray()), 8);
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(poll(), "01 03 05 32 00 01 25 09");
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1); // R_W 10's answer, late
    EXPECT_EQ(read("R_W", 10, 1), "00 00");
    EXPECT_EQ(read("R_W", 50, 1), "34 12");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 50}}));
}

TEST_F(ReplyOutOfTurn, ThatComesTwiceIsRefusedByARequestOfAnotherLength)
{
    plan({key("R_W", 10, 1), key("R_W", 50, 2)});
    poll();
    const QByteArray first = withCrc("01 03 02 12 34");
    EXPECT_EQ(reply(first), 1);
    EXPECT_EQ(poll(), "01 03 05 32 00 02 65 08");
    EXPECT_EQ(reply(first), 8);
    EXPECT_EQ(read("R_W", 50, 2), "00 00 00 00");
    EXPECT_EQ(poll(), "01 03 05 32 00 02 65 08");
}

} // namespace
