#include "line/wire.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;

WireFormat wire(const char* text)
{
    return parseWireFormat(text);
}

TEST(Wire, ACharacterHasAStartBitDataParityAndStopBits)
{
    EXPECT_EQ(wire("38400,8,EVEN,1").bitsPerCharacter(), 11);
    EXPECT_EQ(wire("38400,8,NONE,1").bitsPerCharacter(), 10);
    EXPECT_EQ(wire("38400,8,ODD,2").bitsPerCharacter(), 12);
    EXPECT_EQ(wire("38400,8,EVEN,1").characters(1), microseconds(286));
    EXPECT_EQ(wire("9600,8,NONE,1").characters(100), microseconds(104167));
}

TEST(Wire, TheSilenceIsThreeAndAHalfCharactersUpTo19200Baud)
{
    EXPECT_EQ(wire("9600,8,NONE,1").silence(), microseconds(3646));
    EXPECT_EQ(wire("19200,8,EVEN,1").silence(), microseconds(2005));
}

TEST(Wire, TheSilenceIsFixedAbove19200Baud)
{
    EXPECT_EQ(wire("19201,8,EVEN,1").silence(), microseconds(1750));
    EXPECT_EQ(wire("115200,8,EVEN,1").silence(), microseconds(1750));
}

TEST(Wire, AReadTakesItsCharactersTwoSilencesAndTheTurnaround)
{
    // 8 + 7 characters of 286.458 us, 2 x 1.75 ms.
    EXPECT_EQ(wire("38400,8,EVEN,1").transaction(8, 7, microseconds(0)), microseconds(7797));
    EXPECT_EQ(wire("38400,8,EVEN,1").transaction(8, 7, microseconds(5000)), microseconds(12797));
    // 125 registers: 8 + 255 characters.
    EXPECT_EQ(wire("38400,8,EVEN,1").transaction(8, 255, microseconds(0)), microseconds(78839));
}

TEST(Wire, ABroadcastHasNoReplyToKeepSilenceBefore)
{
    EXPECT_EQ(wire("38400,8,EVEN,1").transaction(8, 0, microseconds(100000)),
              microseconds(2292 + 1750 + 100000));
}

TEST(Wire, SettingsAreReadAndWritten)
{
    const WireFormat format = wire("19200,8,odd,2");
    EXPECT_EQ(format.baudRate, 19200);
    EXPECT_EQ(format.dataBits, 8);
    EXPECT_EQ(format.parity, 'O');
    EXPECT_EQ(format.stopBits, 2);
    EXPECT_EQ(toText(format), "19200,8,ODD,2");
    EXPECT_EQ(toText(wire("9600, 8, N, 1")), "9600,8,NONE,1");
}

TEST(Wire, MistakesInTheSettingsAreNamed)
{
    const auto mistake = [](const char* text) {
        const std::string whole = complaint([&] { parseWireFormat(text); });
        const std::size_t from = whole.find("': ");
        return from == std::string::npos ? whole
                                         : whole.substr(from + 3, whole.find(';') - from - 3);
    };
    EXPECT_EQ(mistake("38400,8,EVEN"), "four parts are needed");
    EXPECT_EQ(mistake("fast,8,EVEN,1"), "the baud rate must be 50 to 4000000");
    EXPECT_EQ(mistake("0,8,EVEN,1"), "the baud rate must be 50 to 4000000");
    EXPECT_EQ(mistake("38400,7,EVEN,1"), "Modbus RTU needs 8 data bits");
    EXPECT_EQ(mistake("38400,8,MARK,1"), "the parity must be NONE, EVEN or ODD");
    EXPECT_EQ(mistake("38400,8,EVEN,3"), "stop bits must be 1 or 2");
}

using WireOfLibrary = LoadedLibrary;

TEST_F(WireOfLibrary, TheLibraryReportsItsOwnLine)
{
    EXPECT_EQ(defaultLine(library), "38400,8,EVEN,1");
}

} // namespace

} // namespace dov417
