#include "scan/scan_choices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "complaint.h"

namespace dov417 {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<std::string> common(const char* own)
{
    std::vector<std::string> texts;
    for (const SerialFormat& line : commonLines(parseRtuFormat(own)))
        texts.push_back(toText(line));
    return texts;
}

TEST(ScanChoices, BeginWithTheOwnLineAndNameEachOnce)
{
    EXPECT_THAT(common("38400,8,EVEN,1"),
                ElementsAre("38400,8,EVEN,1", "9600,8,EVEN,1", "9600,8,NONE,1", "9600,8,ODD,1",
                            "19200,8,EVEN,1", "19200,8,NONE,1", "19200,8,ODD,1", "38400,8,NONE,1",
                            "38400,8,ODD,1", "115200,8,EVEN,1", "115200,8,NONE,1", "115200,8,ODD,1",
                            "57600,8,EVEN,1", "57600,8,NONE,1", "57600,8,ODD,1", "4800,8,EVEN,1",
                            "4800,8,NONE,1", "4800,8,ODD,1", "2400,8,EVEN,1", "2400,8,NONE,1",
                            "2400,8,ODD,1", "1200,8,EVEN,1", "1200,8,NONE,1", "1200,8,ODD,1"));
    EXPECT_EQ(common("9600,8,NONE,2").front(), "9600,8,NONE,2");
    EXPECT_EQ(common("9600,8,NONE,2").size(), 24U) << "who hears one hears the other";
    EXPECT_EQ(common("31250,8,NONE,1").size(), 25U);
}

TEST(ScanChoices, HaveStationsInTheirOrderEachOnce)
{
    EXPECT_THAT(parseStations("7"), ElementsAre(7));
    EXPECT_THAT(parseStations("5..7"), ElementsAre(5, 6, 7));
    EXPECT_THAT(parseStations("5-7,9"), ElementsAre(5, 6, 7, 9));
    EXPECT_THAT(parseStations("17, 1..3,2..4"), ElementsAre(17, 1, 2, 3, 4));
    EXPECT_EQ(parseStations("1..247").size(), 247U);
}

TEST(ScanChoices, AreRefusedWithTheReason)
{
    const auto complaintOf = [](const char* text) {
        return complaint([text]() { parseStations(text); });
    };
    EXPECT_EQ(complaintOf("0..3"), "stations '0..3': '0' is no station from 1 to 247; written as "
                                   "in 1..247 or 1,2,10..20");
    EXPECT_EQ(complaintOf("9..3"), "stations '9..3': 3 comes before 9");
    for (const char* text :
         {"", "248", "1,", "1..", "..3", "a", "1..2..3", "-1", "1-", "1-2-3", "1--3"})
        EXPECT_THAT(complaintOf(text), HasSubstr("is no station from 1 to 247")) << text;
}

} // namespace

} // namespace dov417
