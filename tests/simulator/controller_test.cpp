#include "simulator/controller.h"

#include <gtest/gtest.h>
#include <random>

#include "line/crc16.h"
#include "support.h"

namespace dov417::simulator {
namespace {

class ControllerTest : public testing::Test {
protected:
    ControllerTest()
    {
        one.setWord(Area::R, 10, 0x000A);
        one.setWord(Area::R, 11, 0x0102);
        one.setWord(Area::T, 127, 5);
        one.setWord(Area::C, 0, 6);
        one.setWord(Area::M, 2, 0x6543);
        one.setWord(Area::M, 3, 0x0087);
        two.setWord(Area::R, 10, 0x0001);
    }
    std::string answer(const char* request)
    {
        return hexOf(controller.answer(bytesOf(request)));
    }

    Memory memory{{1, 2}};
    StationMemory& one = *memory.station(1);
    StationMemory& two = *memory.station(2);
    Controller controller{memory};
};

TEST_F(ControllerTest, ReadsOneRegister)
{
    one.setWord(Area::R, 10, 0x1234);
    EXPECT_EQ(answer("01 03 05 0A 00 01 A4 C4"), "01 03 02 12 34 B5 33");
}

TEST_F(ControllerTest, ReadsRegistersHighByteFirst)
{
    EXPECT_EQ(answer("01 03 05 0A 00 02 E4 C5"), "01 03 04 00 0A 01 02 5A 60");
}

TEST_F(ControllerTest, ReadsFromTimersIntoCounters)
{
    EXPECT_EQ(answer("01 03 01 FF 00 02 F5 C7"), "01 03 04 00 05 00 06 6A 30");
}

TEST_F(ControllerTest, ReadsCoilsWithTheLowestInBit0)
{
    // 48 coils from M 2 on: each word low byte first.
    EXPECT_EQ(answer("01 01 10 20 00 30 39 14"), "01 01 06 43 65 87 00 00 00 CA E3");
}

TEST_F(ControllerTest, FillsTheLastByteOfCoilsWithZeros)
{
    one.setWord(Area::I, 0, 0xFFFD);
    EXPECT_EQ(answer("01 01 00 00 00 03 7C 0B"), "01 01 01 05 91 8B");
}

TEST_F(ControllerTest, ReadsCoilsFromOneAreaIntoTheNext)
{
    one.setWord(Area::I, 127, 0x8000);
    one.setWord(Area::Q, 0, 0x0001);
    EXPECT_EQ(answer("01 01 07 FF 00 02 8C 8F"), "01 01 01 03 11 89");
}

TEST_F(ControllerTest, SwitchesOneCoilOnAndOffAndEchoes)
{
    EXPECT_EQ(answer("01 05 08 05 FF 00 9E 5B"), "01 05 08 05 FF 00 9E 5B");
    EXPECT_EQ(one.word(Area::Q, 0), 0x0020);
    EXPECT_EQ(answer("01 05 08 05 00 00 DF AB"), "01 05 08 05 00 00 DF AB");
    EXPECT_EQ(one.word(Area::Q, 0), 0x0000);
}

TEST_F(ControllerTest, WritesOneRegisterAndEchoes)
{
    EXPECT_EQ(answer("01 06 05 0A 12 34 A4 73"), "01 06 05 0A 12 34 A4 73");
    EXPECT_EQ(one.word(Area::R, 10), 0x1234);
    EXPECT_EQ(two.word(Area::R, 10), 0x0001);
}

TEST_F(ControllerTest, WritesARunOfCoilsAndLeavesTheirNeighbours)
{
    one.setWord(Area::Q, 0, 0x8010);
    EXPECT_EQ(answer("01 0F 08 05 00 0A 02 CD 01 F9 FD"), "01 0F 08 05 00 0A C7 AD");
    EXPECT_EQ(one.word(Area::Q, 0), 0xB9B0); // CD, 01 are bits 5 to 14: 39A0
}

TEST_F(ControllerTest, WritesCoilsWhereTheFrameSaysEvenIfItNamesThePlainBitNumber)
{
    EXPECT_EQ(answer("01 0F 00 05 00 0A 02 CD 01 70 3D"), "01 0F 00 05 00 0A C5 CD");
    EXPECT_EQ(one.word(Area::Q, 0), 0);
    EXPECT_EQ(one.word(Area::I, 0), 0x39A0);
}

TEST_F(ControllerTest, WritesARunOfRegisters)
{
    EXPECT_EQ(answer("01 10 05 0A 00 02 04 11 22 33 44 FD 75"), "01 10 05 0A 00 02 61 06");
    EXPECT_EQ(one.word(Area::R, 10), 0x1122);
    EXPECT_EQ(one.word(Area::R, 11), 0x3344);
}

struct Refusal {
    const char* what;
    const char* request;
    const char* reply;
};

class Refusals : public ControllerTest, public testing::WithParamInterface<Refusal> {};

TEST_P(Refusals, AreExceptionsAndChangeNothing)
{
    EXPECT_EQ(answer(GetParam().request), GetParam().reply);
    EXPECT_EQ(one.word(Area::R, 10), 0x000A);
    EXPECT_EQ(one.word(Area::R, 3999), 0);
    EXPECT_EQ(one.word(Area::Q, 0), 0);
    EXPECT_EQ(one.word(Area::M, 127), 0);
    EXPECT_EQ(controller.counters().refused, 1U);
    EXPECT_EQ(controller.counters().writes, 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Controller, Refusals,
    testing::Values(
        Refusal{"Function4", "01 04 00 00 00 01 31 CA", "01 84 01 82 C0"},
        Refusal{"Function43", "01 2B 0E 01 00 70 77", "01 AB 01 9E F0"},
        Refusal{"ReadOfNoRegister", "01 03 05 00 00 00 45 06", "01 83 03 01 31"},
        Refusal{"ReadOf129Registers", "01 03 05 00 00 81 85 66", "01 83 03 01 31"},
        Refusal{"ReadOf2049Coils", "01 01 00 00 08 01 FA 0A", "01 81 03 00 51"},
        Refusal{"CoilValueNeitherOnNorOff", "01 05 08 05 12 34 D2 DC", "01 85 03 02 91"},
        Refusal{"TooFewBytesForTheRegisters", "01 10 05 0A 00 02 03 00 0A 01 38 D9",
                "01 90 03 0C 01"},
        Refusal{"TooManyBytesForTheRegisters", "01 10 05 0A 00 02 05 00 0A 01 02 03 93 5D",
                "01 90 03 0C 01"},
        Refusal{"WriteOfNoRegister", "01 10 05 0A 00 00 00 C6 88", "01 90 03 0C 01"},
        Refusal{"WriteOfNoCoil", "01 0F 08 05 00 00 00 EA 32", "01 8F 03 04 31"},
        Refusal{"ReadWithAByteTooMany", "01 03 05 0A 00 01 00 C5 BB", "01 83 03 01 31"},
        Refusal{"ReadWithoutQuantity", "01 03 05 0A 72 8F", "01 83 03 01 31"},
        Refusal{"RegisterBelowTheTimers", "01 03 01 7F 00 01 B4 2E", "01 83 02 C0 F1"},
        Refusal{"RegisterBehindTheCounters", "01 03 02 7F 00 02 F4 6B", "01 83 02 C0 F1"},
        Refusal{"RegisterBehindR", "01 03 14 A0 00 01 81 D8", "01 83 02 C0 F1"},
        Refusal{"RunBeyondR", "01 03 14 9F 00 02 F1 D5", "01 83 02 C0 F1"},
        Refusal{"CoilBehindM", "01 01 18 00 00 01 FB 6A", "01 81 02 C1 91"},
        Refusal{"RunBeyondM", "01 01 17 FF 00 02 88 4F", "01 81 02 C1 91"},
        Refusal{"SwitchBehindM", "01 05 18 00 FF 00 8A 9A", "01 85 02 C3 51"},
        Refusal{"WriteBelowR", "01 06 04 FF 00 01 79 0A", "01 86 02 C3 A1"},
        Refusal{"CoilRunBeyondM", "01 0F 17 FF 00 02 01 03 89 A5", "01 8F 02 C5 F1"},
        Refusal{"RegisterRunBeyondR", "01 10 14 9F 00 02 04 00 0A 01 02 E5 D0", "01 90 02 CD C1"}),
    [](const auto& tested) { return tested.param.what; });

TEST_F(ControllerTest, TheLastRegisterAndTheLastCoilAreThere)
{
    EXPECT_EQ(answer("01 03 14 9F 00 01 B1 D4"), "01 03 02 00 00 B8 44");
    EXPECT_EQ(answer("01 01 17 FF 00 01 C8 4E"), "01 01 01 00 51 88");
}

TEST_F(ControllerTest, CountsThe256DataBytesOf128RegistersAs0)
{
    one.setWord(Area::R, 127, 0xABCD);
    const QByteArray reply = controller.answer(bytesOf("01 03 05 00 00 80 44 A6"));
    ASSERT_EQ(reply.size(), 261);
    EXPECT_EQ(hexOf(reply.left(3)), "01 03 00");
    EXPECT_EQ(hexOf(reply.mid(3 + 2 * 10, 4)), "00 0A 01 02");
    EXPECT_EQ(hexOf(reply.mid(3 + 2 * 127, 2)), "AB CD");
    EXPECT_TRUE(hasGoodCrc(reply));
}

TEST_F(ControllerTest, CountsThe256DataBytesOf2048CoilsAs0)
{
    one.setWord(Area::I, 127, 0x8000);
    const QByteArray reply = controller.answer(bytesOf("01 01 00 00 08 00 3B CA"));
    ASSERT_EQ(reply.size(), 261);
    EXPECT_EQ(hexOf(reply.left(3)), "01 01 00");
    EXPECT_EQ(hexOf(reply.mid(257, 2)), "00 80");
}

TEST_F(ControllerTest, TakesAWriteOf128RegistersWithTheByteCount0)
{
    QByteArray request = bytesOf("01 10 05 00 00 80 00");
    for (int i = 0; i < 128; ++i)
        request += bytesOf(i == 127 ? "BE EF" : "00 01");
    EXPECT_EQ(hexOf(controller.answer(withCrc(request))), "01 10 05 00 00 80 C1 65");
    EXPECT_EQ(one.word(Area::R, 0), 1);
    EXPECT_EQ(one.word(Area::R, 127), 0xBEEF);
    EXPECT_EQ(one.word(Area::R, 128), 0);
}

TEST_F(ControllerTest, AStrictOneKeepsToTheLimitsOfTheProtocol)
{
    Controller strict(memory, Limits::strict());
    EXPECT_EQ(hexOf(strict.answer(bytesOf("01 03 05 00 00 7E C5 26"))), "01 83 03 01 31");
    EXPECT_EQ(strict.answer(bytesOf("01 03 05 00 00 7D 85 27")).size(), 255);
    EXPECT_EQ(hexOf(strict.answer(bytesOf("01 01 00 00 07 D1 FE 66"))), "01 81 03 00 51");
    EXPECT_EQ(strict.answer(bytesOf("01 01 00 00 07 D0 3F A6")).size(), 255);
}

TEST_F(ControllerTest, ExecutesBroadcastWritesEverywhereAndAnswersNone)
{
    EXPECT_EQ(answer("00 06 05 0A 00 07 E9 17"), "");
    EXPECT_EQ(one.word(Area::R, 10), 7);
    EXPECT_EQ(two.word(Area::R, 10), 7);
    EXPECT_EQ(answer("00 05 08 05 FF 00 9F 8A"), "");
    EXPECT_EQ(two.word(Area::Q, 0), 0x0020);
    EXPECT_EQ(answer("00 0F 08 05 00 0A 02 CD 01 F4 6D"), "");
    EXPECT_EQ(two.word(Area::Q, 0), 0x39A0);
    EXPECT_EQ(answer("00 10 05 0A 00 02 04 00 0A 01 02 E8 2F"), "");
    EXPECT_EQ(two.word(Area::R, 11), 0x0102);
    EXPECT_EQ(controller.counters().broadcasts, 4U);
    EXPECT_EQ(controller.counters().writes, 4U);
}

TEST_F(ControllerTest, StaysSilentToBroadcastReadsAndToBroadcastsThatItCannotExecute)
{
    EXPECT_EQ(answer("00 03 05 0A 00 01 A5 15"), "");
    EXPECT_EQ(answer("00 06 04 FF 00 07 F8 D9"), "");
    EXPECT_EQ(controller.counters().broadcasts, 2U);
    EXPECT_EQ(controller.counters().writes, 0U);
}

TEST_F(ControllerTest, StaysSilentToOtherStations)
{
    EXPECT_EQ(answer("07 03 05 0A 00 01 A4 A2"), "");
    EXPECT_EQ(controller.counters().otherStation, 1U);
}

TEST_F(ControllerTest, EachStationAnswersForItself)
{
    EXPECT_EQ(answer("02 03 05 0A 00 01 A4 F7"), "02 03 02 00 01 3D 84");
}

TEST_F(ControllerTest, StaysSilentToEveryFlippedBitOfAFrame)
{
    const QByteArray good = bytesOf("01 06 05 0A 12 34 A4 73");
    for (int bit = 0; bit < 64; ++bit) {
        QByteArray bad = good;
        bad[bit / 8] = static_cast<char>(bad.at(bit / 8) ^ (1 << (bit % 8)));
        EXPECT_TRUE(controller.answer(bad).isEmpty()) << hexOf(bad);
    }
    EXPECT_EQ(controller.counters().badFrames, 64U);
    EXPECT_EQ(one.word(Area::R, 10), 0x000A);
}

TEST_F(ControllerTest, StaysSilentToEveryBeginningOfAFrame)
{
    const QByteArray good = bytesOf("01 10 05 0A 00 02 04 00 0A 01 02 EC D3");
    for (int length = 0; length < good.size(); ++length)
        EXPECT_TRUE(controller.answer(good.left(length)).isEmpty()) << length;
    EXPECT_EQ(controller.counters().writes, 0U);
}

TEST_F(ControllerTest, AnswersWhateverComesWithAFrameOfThatStationOrNotAtAll)
{
    std::mt19937 chance(1);
    int replies = 0;
    for (int i = 0; i < 50000; ++i) {
        QByteArray request;
        request += static_cast<char>(chance() % 4);
        request += static_cast<char>(chance() % 20);
        const auto length = chance() % 300;
        for (unsigned j = 0; j < length; ++j) // small numbers are likely to be good ones
            request += static_cast<char>(chance() % (chance() % 2 == 0 ? 256 : 8));
        const QByteArray reply = controller.answer(withCrc(request));
        if (reply.isEmpty())
            continue;
        ++replies;
        ASSERT_TRUE(hasGoodCrc(reply)) << hexOf(request);
        ASSERT_LE(reply.size(), 261);
        ASSERT_EQ(reply.at(0), request.at(0));
        ASSERT_EQ(reply.at(1) & 0x7F, request.at(1));
    }
    EXPECT_GT(replies, 10000);
    EXPECT_EQ(controller.counters().frames, 50000U);
}

TEST_F(ControllerTest, TellsWhatItDidWithAFrame)
{
    const auto told = [this](const char* request) {
        return describe(controller.serve(bytesOf(request)));
    };
    EXPECT_EQ(told("01 03 05 0A 00 01 A4 C4"), "station 1 reads register 1290");
    EXPECT_EQ(told("01 01 10 20 00 30 39 14"), "station 1 reads coils 4128 to 4175");
    EXPECT_EQ(told("00 06 05 0A 00 07 E9 17"), "broadcast writes register 1290");
    EXPECT_EQ(told("07 03 05 0A 00 01 A4 A2"), "station 7 reads register 1290: not here");
    EXPECT_EQ(told("01 04 00 00 00 01 31 CA"),
              "station 1 function 4: exception 1, illegal function");
    EXPECT_EQ(told("01 03 14 A0 00 01 81 D8"),
              "station 1 reads register 5280: exception 2, illegal data address");
    EXPECT_EQ(told("01 03 40 20"), "no frame: too short or wrong CRC");
}

} // namespace
} // namespace dov417::simulator
