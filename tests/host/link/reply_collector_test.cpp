#include "link/reply_collector.h"

#include <gtest/gtest.h>

#include "exchange.h"
#include "line/crc16.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr int readReplyLength = 7;

// Coil 0x0805 of station 1 is set: the reply repeats the request.
const char* const coilRequest = "010508 05FF009E5B";
constexpr int writeReplyLength = 8;

class Collecting : public ::testing::Test {
protected:
    Arrival add(const char* bytes)
    {
        return collector.add(hex(bytes));
    }

    void expectStrays(std::initializer_list<std::pair<StrayKind, const char*>> expected)
    {
        const QList<Stray> strays = collector.takeStrays();
        ASSERT_EQ(strays.size(), static_cast<int>(expected.size()));
        int index = 0;
        for (const auto& [kind, bytes] : expected) {
            EXPECT_EQ(strays.at(index).kind, kind);
            EXPECT_EQ(strays.at(index).bytes.toHex().toUpper().toStdString(), bytes);
            ++index;
        }
    }

    ReplyCollector collector;
};

class CollectingARead : public Collecting {
protected:
    void SetUp() override
    {
        collector.begin(hex(readRequest), readReplyLength);
    }
};

TEST_F(CollectingARead, TheReplyIsCompleteWithItsLastByte)
{
    for (int i = 0; i < readReplyLength - 1; ++i)
        ASSERT_EQ(collector.add(hex(readReply).mid(i, 1)), Arrival::incomplete);
    EXPECT_EQ(collector.add(hex(readReply).mid(readReplyLength - 1)), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex(readReply));
    expectStrays({});
}

TEST_F(CollectingARead, AnExceptionReplyIsRecognisedByItsFiveBytes)
{
    EXPECT_EQ(add("018302C0F1"), Arrival::exception);
    EXPECT_EQ(collector.reply(), hex("018302C0F1"));
}

TEST_F(CollectingARead, AGarbledExceptionIsHandedOnOnlyOnceTheLineIsSilent)
{
    EXPECT_EQ(add("018302C0F0"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex("018302C0F0"));
}

TEST_F(CollectingARead, AReplyWithABadCrcIsHandedOnAsItCame)
{
    EXPECT_EQ(add("010302002A399A"), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex("010302002A399A"));
}

TEST_F(CollectingARead, ATruncatedReplyIsHandedOnAfterTheSilence)
{
    EXPECT_EQ(add("0103020 0"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex("01030200"));
}

TEST_F(CollectingARead, SilenceWithoutBytesChangesNothing)
{
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    EXPECT_TRUE(collector.isEmpty());
    EXPECT_EQ(add(readReply), Arrival::reply);
}

TEST_F(CollectingARead, AReplyOfAnotherStationIsCountedAndTheAwaitedOneStillTaken)
{
    EXPECT_EQ(add("0203020007BD86"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    expectStrays({{StrayKind::otherStation, "0203020007BD86"}});
    EXPECT_EQ(add(readReply), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex(readReply));
}

TEST_F(CollectingARead, AReplyForAnotherFunctionIsCountedAndNotHandedOn)
{
    EXPECT_EQ(add("0104020007F8F2"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    expectStrays({{StrayKind::otherFunction, "0104020007F8F2"}});
}

TEST_F(CollectingARead, AnExceptionForAnotherFunctionIsNotHandedOn)
{
    EXPECT_EQ(add("0185030291"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    expectStrays({{StrayKind::otherFunction, "0185030291"}});
}

TEST_F(CollectingARead, ALateReplyOfAnotherLengthIsNotTakenForThisOne)
{
    // Two registers were read before; their reply comes now.
    EXPECT_EQ(add("010304000100022A32"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    expectStrays({{StrayKind::otherRequest, "010304000100022A32"}});
}

TEST_F(CollectingARead, NoiseBeforeTheReplyIsStripped)
{
    EXPECT_EQ(add("FF01AA010302002A399B"), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex(readReply));
    expectStrays({{StrayKind::noise, "FF01AA"}});
}

TEST_F(CollectingARead, NoiseAloneIsDroppedAfterTheSilence)
{
    EXPECT_EQ(add("FFAA55"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    EXPECT_TRUE(collector.isEmpty());
    expectStrays({{StrayKind::noise, "FFAA55"}});
}

TEST_F(CollectingARead, BytesBehindTheReplyAreLateOnes)
{
    EXPECT_EQ(add("010302002A399BEEEE"), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex(readReply));
    expectStrays({{StrayKind::late, "EEEE"}});
}

TEST_F(CollectingARead, AnEchoOfTheRequestIsStripped)
{
    EXPECT_EQ(add(readRequest), Arrival::incomplete);
    EXPECT_EQ(add(readReply), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex(readReply));
    expectStrays({{StrayKind::echo, readRequest}});
}

TEST_F(CollectingARead, AnEchoThatOpensLikeTheReplyIsStillAnEcho)
{
    // Register 0x0200, the first counter: the address byte equals the reply's byte count.
    collector.begin(hex("01030200000185B2"), readReplyLength);
    EXPECT_EQ(add("01030200000185"), Arrival::incomplete);
    EXPECT_EQ(add("B2"), Arrival::incomplete);
    EXPECT_EQ(add(readReply), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex(readReply));
}

TEST_F(CollectingARead, ABlockOf128RegistersIsTakenWhateverItsCountByteSays)
{
    collector.begin(hex("010300000080446A"), 261);
    QByteArray reply = hex("010300") + QByteArray(256, '\0') + hex("0000");
    EXPECT_EQ(collector.add(reply), Arrival::reply); // the driver judges the CRC
    EXPECT_EQ(collector.reply().size(), 261);
}

class CollectingAWrite : public Collecting {
protected:
    void SetUp() override
    {
        collector.begin(hex(coilRequest), writeReplyLength);
    }

    // One read on an adapter that hears what it sends.
    void learnEcho()
    {
        collector.begin(hex(readRequest), readReplyLength);
        ASSERT_EQ(add(readRequest), Arrival::incomplete);
        ASSERT_EQ(add(readReply), Arrival::reply);
        collector.wasAnswer(true);
        collector.takeStrays();
        collector.begin(hex(coilRequest), writeReplyLength);
    }
};

TEST_F(CollectingAWrite, TheRepeatedRequestIsTheReply)
{
    EXPECT_EQ(add(coilRequest), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex(coilRequest));
}

TEST_F(CollectingAWrite, OnAnEchoingAdapterOnlyTheSecondCopyIsTheReply)
{
    learnEcho();
    EXPECT_EQ(add(coilRequest), Arrival::incomplete);
    EXPECT_EQ(add(coilRequest), Arrival::reply);
    expectStrays({{StrayKind::echo, "01050805FF009E5B"}});
}

TEST_F(CollectingAWrite, OnAnEchoingAdapterASilentControllerDoesNotConfirmAWrite)
{
    learnEcho();
    EXPECT_EQ(add(coilRequest), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
}

TEST_F(CollectingAWrite, ARefusalBehindAnEchoIsSeenEvenBeforeAnyRead)
{
    EXPECT_EQ(add("01050805FF009E5B0185030291"), Arrival::exception);
    EXPECT_EQ(collector.reply(), hex("0185030291"));
    expectStrays({{StrayKind::echo, "01050805FF009E5B"}});
}

TEST_F(CollectingAWrite, AReadWithoutEchoEndsTheExpectationOfOne)
{
    learnEcho();
    collector.begin(hex(readRequest), readReplyLength);
    ASSERT_EQ(add(readReply), Arrival::reply);
    collector.wasAnswer(true);
    collector.begin(hex(coilRequest), writeReplyLength);
    EXPECT_EQ(add(coilRequest), Arrival::reply);
}

// It may have come too late for another.
TEST_F(CollectingAWrite, AReplyThatWasNoAnswerToWhatWasSentTellsNothingOfTheAdapter)
{
    learnEcho();
    collector.begin(hex(readRequest), readReplyLength);
    ASSERT_EQ(add(readReply), Arrival::reply);
    collector.begin(hex(coilRequest), writeReplyLength);
    EXPECT_EQ(add(coilRequest), Arrival::incomplete);
}

TEST_F(CollectingAWrite, AReplyBehindWhatMayHaveBeenAnEchoTellsNothingOfTheAdapter)
{
    learnEcho();
    collector.begin(hex(readRequest), readReplyLength);
    ASSERT_EQ(collector.add(hex("017091") + hex(readReply)), Arrival::reply);
    collector.wasAnswer(false);
    collector.begin(hex(coilRequest), writeReplyLength);
    EXPECT_EQ(add(coilRequest), Arrival::incomplete);
}

TEST_F(CollectingAWrite, TheEchoIsStrippedOnceWhateverElseComesBeforeTheReply)
{
    learnEcho();
    EXPECT_EQ(add(coilRequest), Arrival::incomplete);
    EXPECT_EQ(add("0185030291"), Arrival::exception);
    collector.goOn(); // it was late
    EXPECT_EQ(add(coilRequest), Arrival::reply);
}

TEST_F(CollectingAWrite, TheEchoOfAReadTellsThatTheAdapterHearsWhatItSends)
{
    collector.begin(hex(readRequest), readReplyLength);
    EXPECT_EQ(add(readRequest), Arrival::incomplete);
    EXPECT_TRUE(collector.knowsAdapter());
    collector.begin(hex(coilRequest), writeReplyLength);
    EXPECT_EQ(add(coilRequest), Arrival::incomplete);
}

// Of a driver that is switched on.
TEST_F(CollectingAWrite, AnEchoBehindAGlitchIsOne)
{
    collector.begin(hex(readRequest), readReplyLength);
    EXPECT_EQ(collector.add(hex("00") + hex(readRequest)), Arrival::incomplete);
    EXPECT_TRUE(collector.knowsAdapter());
    EXPECT_EQ(add(readReply), Arrival::reply);
    expectStrays({{StrayKind::noise, "00"}, {StrayKind::echo, readRequest}});
    collector.begin(hex(coilRequest), writeReplyLength);
    EXPECT_EQ(collector.add(hex("00") + hex(coilRequest)), Arrival::incomplete);
    EXPECT_EQ(add(coilRequest), Arrival::reply);
}

TEST_F(CollectingAWrite, AnotherAdapterMayEchoOrNot)
{
    learnEcho();
    collector.forgetAdapter();
    EXPECT_FALSE(collector.knowsAdapter());
    EXPECT_EQ(add(coilRequest), Arrival::incomplete) << "it still may";
}

TEST_F(CollectingAWrite, TheConfirmationOfAnotherAddressIsNotTaken)
{
    EXPECT_EQ(add("01050806FF006E5B"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    expectStrays({{StrayKind::otherRequest, "01050806FF006E5B"}});
}

TEST_F(CollectingAWrite, AnotherValueAtTheSameAddressIsHandedOnOnceTheTimeIsUp)
{
    EXPECT_EQ(add("010508050000DFAB"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    EXPECT_EQ(collector.timeIsUp(), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex("010508050000DFAB"));
}

TEST_F(CollectingAWrite, AnotherAddressIsNotHandedOnEvenThen)
{
    EXPECT_EQ(add("01050806FF006E5B"), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    EXPECT_EQ(collector.timeIsUp(), Arrival::incomplete);
}

TEST_F(CollectingAWrite, TheEchoOfALongWriteIsNotMistakenForItsReply)
{
    const char* const request = "0110050A000204000100029C81";
    collector.begin(hex(request), writeReplyLength);
    EXPECT_EQ(add("0110050A00020400"), Arrival::incomplete); // eight bytes of the echo
    EXPECT_EQ(add("0100029C81"), Arrival::incomplete);
    EXPECT_EQ(add("0110050A00026106"), Arrival::reply);
    EXPECT_EQ(collector.reply(), hex("0110050A00026106"));
    expectStrays({{StrayKind::echo, request}});
}

QByteArray withItsCrc(const char* bytes)
{
    return withCrc(hex(bytes));
}

TEST_F(Collecting, AReplyThatTellsNoLengthIsWholeOnceTheLineIsSilent)
{
    const QByteArray request = withItsCrc("012B0E0100");
    const QByteArray reply = withItsCrc("012B0E01010000010002414200");
    collector.begin(request, untoldLength);
    EXPECT_EQ(collector.add(hex("FF") + reply), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::reply);
    EXPECT_EQ(collector.reply(), reply);
    expectStrays({{StrayKind::noise, "FF"}});
}

TEST_F(Collecting, AReplyThatTellsNoLengthIsOfTheStationAndTheFunctionThatWereAsked)
{
    collector.begin(withItsCrc("012B0E0100"), untoldLength);
    EXPECT_EQ(collector.add(withItsCrc("022B0E01")), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    EXPECT_EQ(collector.add(withItsCrc("01AB01")), Arrival::exception);
}

TEST_F(Collecting, AReplyThatTellsNoLengthMayConfirmAndSayNothingElse)
{
    const QByteArray reply = withItsCrc("0141");
    collector.begin(withItsCrc("014105"), untoldLength);
    EXPECT_EQ(collector.add(reply), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::reply);
    EXPECT_EQ(collector.reply(), reply);
}

TEST_F(Collecting, ACounterIsTheReplyToADiagnosticsRequest)
{
    collector.begin(withItsCrc("0108000B0000"), writeReplyLength);
    EXPECT_EQ(collector.add(withItsCrc("0108000C0007")), Arrival::incomplete) << "another one";
    collector.begin(withItsCrc("0108000B0000"), writeReplyLength);
    EXPECT_EQ(collector.add(withItsCrc("0108000B0007")), Arrival::reply);
}

TEST_F(Collecting, AReadOfWhatIsWrittenAtOnceHasAReplyWithoutAnAddress)
{
    collector.begin(withItsCrc("0117000000010564000102 0007"), readReplyLength);
    EXPECT_EQ(collector.add(withItsCrc("0117020005")), Arrival::reply);
}

} // namespace

} // namespace dov417
