#include "tool/scan_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dov417 {

namespace {

const SerialFormat line = parseRtuFormat("9600,8,NONE,1");

Found station(bool isSlow, bool isConfirmed)
{
    return {line, 7, Micros(5349), isSlow, isConfirmed};
}

ScanHeard heard(HeardKind kind)
{
    return {kind, line, 7, 21, {}};
}

TEST(ScanWords, SayHowFastAStationAnswers)
{
    const Micros timeout(50000);
    EXPECT_EQ(foundText(station(false, true), timeout, {}),
              "station 7 at 9600,8,NONE,1 answers in 5.3 ms");
    EXPECT_EQ(foundText(station(true, true), timeout, {}),
              "station 7 at 9600,8,NONE,1 answers in 5.3 ms: slow, as it is given 50.0 ms");
    EXPECT_EQ(foundText(station(false, false), timeout, {}),
              "station 7 at 9600,8,NONE,1 answered once, in 5.3 ms, and then no more");
    EXPECT_EQ(foundJson(station(true, false), {}).dump(),
              R"({"station":7,"line":"9600,8,NONE,1","milliseconds":5.3,"slow":true,)"
              R"("confirmed":false})");
}

TEST(ScanWords, NameAStationAsItsPeopleDo)
{
    const StationNames names = {{7, "oven"}, {9, ""}};
    EXPECT_EQ(foundText(station(false, true), Micros(50000), names),
              "station 7 (oven) at 9600,8,NONE,1 answers in 5.3 ms");
    EXPECT_EQ(foundJson(station(false, true), names).dump(),
              R"({"station":7,"name":"oven","line":"9600,8,NONE,1","milliseconds":5.3,)"
              R"("slow":false,"confirmed":true})");
    EXPECT_THAT(heardText(heard(HeardKind::garbled), true, names),
                ::testing::HasSubstr(": station 7 (oven) answers garbled, "));
    EXPECT_EQ(stationText(9, names), "station 9");
    EXPECT_EQ(stationText(8, names), "station 8");
}

TEST(ScanWords, NameNoLineOverANetwork)
{
    Found found = station(false, true);
    found.line.reset();
    EXPECT_EQ(foundText(found, Micros(200000), {}), "station 7 answers in 5.3 ms");
    EXPECT_EQ(foundJson(found, {}).dump(),
              R"({"station":7,"milliseconds":5.3,"slow":false,"confirmed":true})");
    ScanHeard twice = heard(HeardKind::answeredTwice);
    twice.line.reset();
    EXPECT_EQ(heardText(twice, false, {}),
              "station 7 answered one question twice: two stations under "
              "one number, or a modem that repeats");
    EXPECT_FALSE(heardJson(twice, false, {}).contains("line"));
    EXPECT_EQ(progressText({std::nullopt, 94, std::chrono::seconds(80), std::chrono::seconds(130)}),
              "[#######-------------]  38 %  station 94, 2 min 10 s left");
}

TEST(ScanWords, SayWhatIsHeardThatIsNoAnswer)
{
    ScanHeard inUse = heard(HeardKind::inUse);
    EXPECT_EQ(
        heardText(inUse, false, {}),
        "at 9600,8,NONE,1: 21 bytes came unasked, but no frame: the line is in use at another "
        "speed or parity, or it is disturbed; nothing is asked (--ask-anyway does)");
    inUse.stations = {1, 9};
    EXPECT_EQ(heardText(inUse, true, {}),
              "at 9600,8,NONE,1: the line is in use: others speak with stations 1, 9");
    EXPECT_EQ(heardText(heard(HeardKind::noFrame), false, {}),
              "at 9600,8,NONE,1: bytes come whoever is asked, but no frame: another speed or "
              "parity, or a disturbed line");
    EXPECT_EQ(heardText(heard(HeardKind::garbled), false, {}),
              "at 9600,8,NONE,1: station 7 answers garbled, 21 bytes without a frame: two stations "
              "under one number, or one with another parity");
    EXPECT_EQ(heardText(heard(HeardKind::answeredTwice), false, {}),
              "at 9600,8,NONE,1: station 7 answered one question twice: two stations under one "
              "number, or a modem that repeats");
    EXPECT_EQ(heardText(heard(HeardKind::otherLine), false, {}),
              "station 7 answered late, perhaps to what it was asked at 9600,8,NONE,1: it is asked "
              "there again");
}

TEST(ScanWords, AreObjectsForPrograms)
{
    ScanHeard inUse{HeardKind::inUse, line, 0, 16, {1, 9}};
    EXPECT_EQ(heardJson(inUse, true, {}).dump(),
              R"({"heard":"inUse","line":"9600,8,NONE,1","bytes":16,"stations":[1,9],)"
              R"("text":"at 9600,8,NONE,1: the line is in use: others speak with stations 1, 9"})");
    const nlohmann::ordered_json garbled = heardJson(heard(HeardKind::garbled), true, {});
    EXPECT_EQ(garbled.at("heard"), "garbled");
    EXPECT_EQ(garbled.at("station"), 7);
    EXPECT_EQ(garbled.at("bytes"), 21);
    EXPECT_EQ(heardJson(heard(HeardKind::noFrame), true, {}).at("heard"), "noFrame");
    EXPECT_EQ(heardJson(heard(HeardKind::answeredTwice), true, {}).at("heard"), "answeredTwice");
    EXPECT_EQ(heardJson(heard(HeardKind::otherLine), true, {}).at("heard"), "otherLine");
}

TEST(ScanWords, SayWhatIsKnownOfARange)
{
    const std::string words = "1/R_W:0..9";
    const WordRange answered{0, 10, WordRange::answered, ""};
    const WordRange refused{0, 10, WordRange::refused, "exception 2 (illegal data address)"};
    const WordRange unknown{0, 10, WordRange::unknown, "no answer: no byte came"};
    EXPECT_EQ(rangeLine(words, answered), "1/R_W:0..9 is answered");
    EXPECT_EQ(rangeLine(words, refused),
              "1/R_W:0..9 is refused: exception 2 (illegal data address)");
    EXPECT_EQ(rangeLine(words, unknown), "1/R_W:0..9 is not known: no answer: no byte came");
    EXPECT_EQ(rangeJson(words, answered).dump(), R"({"range":"1/R_W:0..9","answered":true})");
    EXPECT_EQ(rangeJson(words, refused).dump(),
              R"({"range":"1/R_W:0..9","answered":false,"reason":)"
              R"-("exception 2 (illegal data address)"})-");
    EXPECT_EQ(rangeJson(words, unknown).dump(),
              R"({"range":"1/R_W:0..9","answered":null,"reason":"no answer: no byte came"})");
}

TEST(ScanWords, ShowHowFarItIsOnOneLineOfATerminal)
{
    using std::chrono::seconds;
    EXPECT_EQ(progressText({line, 0, Micros(0), seconds(14)}),
              "[--------------------]   0 %  listening at 9600,8,NONE,1, 14 s left");
    EXPECT_EQ(progressText({line, 94, seconds(80), seconds(130)}),
              "[#######-------------]  38 %  station 94 at 9600,8,NONE,1, 2 min 10 s left");
    const ScanProgress longest{parseRtuFormat("115200,8,EVEN,1"), 247, seconds(99999),
                               seconds(959)};
    EXPECT_LT(progressText(longest).size(), 80U);
}

} // namespace

} // namespace dov417
