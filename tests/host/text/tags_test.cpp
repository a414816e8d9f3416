#include "text/tags.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "loaded_library.h"

namespace dov417 {

namespace {

using ::testing::HasSubstr;

class Tags : public LoadedLibrary {
protected:
    std::vector<Tag> read(const std::string& text)
    {
        return parseTags(library, text, "tags.csv");
    }
    std::string mistake(const std::string& text)
    {
        return complaint([&] { read(text); });
    }
};

const std::string header = "name,station,register,address,count,format,comment\n";

TEST_F(Tags, CarryAllSevenColumns)
{
    const auto tags = read(header + "speed,2,R_D,10,3,float:high-first,\"fast, or not\"\n");
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_EQ(tags[0].name, "speed");
    EXPECT_EQ(tags[0].address, (Address{2, "R_D", Width::doubleWord, 10, 6}));
    EXPECT_EQ(tags[0].format.notation, Notation::real);
    EXPECT_EQ(tags[0].format.order, WordOrder::highFirst);
    EXPECT_EQ(tags[0].comment, "fast, or not");
    EXPECT_EQ(tags[0].line, 2);
}

TEST_F(Tags, EmptyFieldsMeanStationOneOneValueAndNoFormat)
{
    const auto tags = read(header + "a,,M_bit,1.5,,,\n");
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_EQ(tags[0].address, (Address{1, "M_bit", Width::bit, 21, 1}));
    EXPECT_FALSE(tags[0].format.notation.has_value());
    EXPECT_FALSE(tags[0].format.order.has_value());
}

TEST_F(Tags, ColumnsMayBeFewerAndInAnyOrder)
{
    const auto tags = read("address,name,register\n7,a,T\n");
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_EQ(tags[0].name, "a");
    EXPECT_EQ(tags[0].address, (Address{1, "T", Width::word, 7, 1}));
}

TEST_F(Tags, ASpreadsheetMayNameItsDelimiterAboveTheHeader)
{
    for (const std::string end : {"\n", "\r\n"}) {
        const auto tags = read("\xEF\xBB\xBFsep=;" + end + "name;register;address;comment" + end +
                               "a;R_W;1;b,c" + end);
        ASSERT_EQ(tags.size(), 1u);
        EXPECT_EQ(tags[0].comment, "b,c");
        EXPECT_EQ(tags[0].line, 3);
    }
    EXPECT_THAT(mistake("sep=;;\nname;register;address\na;R_W;1\n"), HasSubstr("tags.csv:1"));
    EXPECT_EQ(read("#sep=;\nname,register,address,comment\na,R_W,1,b;c\n").at(0).comment, "b;c");
}

TEST_F(Tags, AFileInUtf16IsNamedAsThat)
{
    const std::string sentence = "tags.csv:1: this is UTF-16; save it as CSV in UTF-8";
    EXPECT_EQ(mistake(std::string("\xFF\xFEn\0a\0m\0e\0,\0", 12)), sentence);
    EXPECT_EQ(mistake(std::string("\xFE\xFF\0n\0a\0m\0e\0,", 12)), sentence);
}

TEST_F(Tags, BytesThatAreNoUtf8AreRefusedWithTheirPlace)
{
    EXPECT_EQ(mistake(header + "a,,T,1,,,gr\u00FC\u00DF\nb,,T,2,,,gr\xFC\xDF\n"),
              "tags.csv:3: column 7 (comment): bytes that are no UTF-8; save the file with that "
              "encoding");
}

TEST_F(Tags, AFolderIsNoTagFile)
{
    const std::string folder = std::filesystem::temp_directory_path();
    EXPECT_EQ(complaint([&] { readTags(library, folder); }),
              "cannot read the tag file " + folder + ": Is a directory");
}

TEST_F(Tags, SpreadsheetsByteOrderMarkLineEndsAndEmptyLinesAreTolerated)
{
    const auto tags = read("\xEF\xBB\xBFname,register,address\r\na,T,1\r\n\r\n,,\r\nb,T,2");
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[1].name, "b");
    EXPECT_EQ(tags[1].line, 5);
}

TEST_F(Tags, LinesAreCountedThroughQuotedLineEnds)
{
    EXPECT_EQ(mistake(header + "a,1,T,1,1,,\"two\nlines\"\nb,1,T,200,1,,\n"),
              "tags.csv:4: column 4 (address): 200 is out of range: T goes from 0 to 127");
}

TEST_F(Tags, MistakesNameFileLineAndColumn)
{
    EXPECT_EQ(mistake(header + ",1,T,1,1,,\n"), "tags.csv:2: column 1 (name): a tag needs a name");
    EXPECT_EQ(mistake(header + "a=b,1,T,1,1,,\n"),
              "tags.csv:2: column 1 (name): a name cannot hold '='");
    EXPECT_EQ(mistake(header + "a,300,T,1,1,,\n"),
              "tags.csv:2: column 2 (station): '300' is no station: 1 to 247, or 0 for a "
              "broadcast");
    EXPECT_EQ(mistake(header + "a,1,X,1,1,,\n"),
              "tags.csv:2: column 3 (register): unknown register 'X'; there are I_bit, Q_bit, "
              "M_bit, R_bit, I_W, Q_W, M_W, R_W, R_D, T, C");
    EXPECT_EQ(mistake(header + "a,1,T,one,1,,\n"),
              "tags.csv:2: column 4 (address): 'one' is no address of T, which is written DDD, as "
              "in 127");
    EXPECT_EQ(mistake(header + "a,1,T,1,0,,\n"),
              "tags.csv:2: column 5 (count): '0' is no number of values: 1 to 65536");
    EXPECT_EQ(mistake(header + "a,1,T,1,1,octal,\n"),
              "tags.csv:2: column 6 (format): unknown format 'octal'; there are unsigned, signed, "
              "hex, bcd, float, int64, uint64, double, bool, binary, text");
    EXPECT_EQ(mistake(header + "a,1,R_W,1,1,float,\n"),
              "tags.csv:2: column 6 (format): float needs the 32 bits of a double word register");
    EXPECT_EQ(mistake(header + "a,1,T,1,1,,x,more\n"),
              "tags.csv:2: column 8: more fields than the header names");
}

TEST_F(Tags, AreNotCalledAsAValueOfAnother)
{
    EXPECT_EQ(mistake("name,register,address,count\na[1],R_W,99,1\na,R_W,10,3\n"),
              "tags.csv:2: column 1 (name): 'a[1]' is one of the values of 'a' already");
    EXPECT_EQ(mistake("name,register,address,count\na,R_W,10,3\na[2],R_W,99,1\na[0],R_W,9,1\n"),
              "tags.csv:3: column 1 (name): 'a[2]' is one of the values of 'a' already");
    const auto tags = read("name,register,address,count\na,R_W,10,3\na[3],R_W,99,1\n"
                           "b,R_W,10,1\nb[0],R_W,98,1\nc[1],R_W,99,1\n");
    EXPECT_EQ(tags.size(), 5u);
}

TEST_F(Tags, HaveNoLineEndInWhatIsShown)
{
    EXPECT_EQ(
        mistake("name,register,address\n\"a\nb\",R_W,1\n"),
        "tags.csv:2: column 1 (name): it cannot hold a line end or another control character");
    EXPECT_EQ(
        mistake("name,register,address,unit\na,R_W,1,\x1B[31m\n"),
        "tags.csv:2: column 4 (unit): it cannot hold a line end or another control character");
    EXPECT_EQ(
        mistake("name,register,address\nsp\xC2\x85"
                "eed,R_W,1\n"),
        "tags.csv:2: column 1 (name): it cannot hold a line end or another control character");
    EXPECT_EQ(read("name,register,address,comment\na,R_W,1,\"two\nlines\"\n").size(), 1u);
}

TEST_F(Tags, SayWhatTheirNumbersMean)
{
    const auto tags = read("name,register,address,format,scale,offset,unit,decimals,min,max\n"
                           "level,R_W,100,signed,0.1,-5,bar,1,0,12.5\nraw,R_W,101,,,,,,,\n");
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].scaling.scale, 0.1);
    EXPECT_EQ(tags[0].scaling.offset, -5);
    EXPECT_EQ(tags[0].scaling.unit, "bar");
    EXPECT_EQ(tags[0].scaling.decimals, 1);
    EXPECT_EQ(tags[0].limits.min, 0);
    EXPECT_EQ(tags[0].limits.max, 12.5);
    EXPECT_TRUE(tags[1].scaling.isPlain());
    EXPECT_FALSE(tags[1].limits.max.has_value());
}

TEST_F(Tags, MistakesInWhatNumbersMeanAreFound)
{
    const std::string columns = "name,register,address,format,scale,decimals,min,max\n";
    EXPECT_EQ(mistake(columns + "a,R_W,1,,0,,,\n"),
              "tags.csv:2: column 5 (scale): with a scale of 0 every value is the same");
    EXPECT_EQ(mistake(columns + "a,R_W,1,,x,,,\n"),
              "tags.csv:2: column 5 (scale): 'x' is no number");
    EXPECT_EQ(mistake(columns + "a,R_W,1,,,10,,\n"),
              "tags.csv:2: column 6 (decimals): decimals are 0 to 9");
    EXPECT_EQ(mistake(columns + "a,R_W,1,,,,5,4\n"),
              "tags.csv:2: column 8 (max): the maximum is below the minimum");
    EXPECT_EQ(mistake(columns + "a,R_W,1,hex,0.1,,,\n"),
              "tags.csv:2: column 5 (scale): only a number has one: no bit, no text, and no value "
              "in hex, "
              "binary or bool");
}

TEST_F(Tags, AreReadAsSpreadsheetsWriteThem)
{
    const auto semicolons = read("\xEF\xBB\xBF# plant 7;\r\nName;REGISTER;Address;Scale;Owner\r\n"
                                 "# spare\r\na;R_W;1;0,5;Meyer\r\n");
    ASSERT_EQ(semicolons.size(), 1u);
    EXPECT_EQ(semicolons[0].scaling.scale, 0.5);
    EXPECT_EQ(semicolons[0].line, 4);
    const auto tabs = read("name\tregister\taddress\tstation\tunit\nb\tT\t7\t\tl/h\n");
    ASSERT_EQ(tabs.size(), 1u);
    EXPECT_EQ(tabs[0].address, (Address{1, "T", Width::word, 7, 1}));
    EXPECT_EQ(tabs[0].scaling.unit, "l/h");
}

TEST_F(Tags, AHashInAQuotedFieldBeginsNoComment)
{
    const auto tags = read(header + "a,1,T,1,1,,\"two\n# lines\"\nb,1,T,2,1,,\n");
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].comment, "two\n# lines");
}

TEST_F(Tags, OfFourWordsAValueTakeTwoDoubleWordsEach)
{
    const auto tags = read(header + "e,1,R_D,10,2,uint64,\n");
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_EQ(tags[0].address, (Address{1, "R_D", Width::quadWord, 10, 8}));
    EXPECT_EQ(mistake(header + "e,1,R_W,10,2,uint64,\n"),
              "tags.csv:2: column 6 (format): uint64 needs four words of a double word register");
}

TEST_F(Tags, OfATextAllWordsAreOneValue)
{
    const auto tags = read(header + "name,2,R_W,10,8,text:low-first,\n");
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_EQ(tags[0].address, (Address{2, "R_W", Width::text, 10, 8}));
    EXPECT_EQ(tags[0].format.byteOrder, WordOrder::lowFirst);
    EXPECT_FALSE(tags[0].format.order.has_value());
    EXPECT_EQ(mistake(header + "name,1,R_W,10,121,text,\n"),
              "tags.csv:2: column 6 (format): text needs a word register, at most 120 words of it");
    EXPECT_EQ(mistake(header + "name,1,R_D,10,2,text,\n"),
              "tags.csv:2: column 6 (format): text needs a word register, at most 120 words of it");
    EXPECT_EQ(mistake("name,register,address,format,max\nname,R_W,10,text,5\n"),
              "tags.csv:2: column 5 (max): only a number has one: no bit, no text, and no value in "
              "hex, binary or bool");
}

TEST_F(Tags, ACommaIsAPointOnlyWhereItEndsNoField)
{
    EXPECT_EQ(read("name;register;address;scale\na;R_W;1;0,5\n").at(0).scaling.scale, 0.5);
    EXPECT_EQ(read("name\tregister\taddress\tscale\na\tR_W\t1\t0,5\n").at(0).scaling.scale, 0.5);
    EXPECT_EQ(mistake("name,register,address,scale\na,R_W,1,\"0,5\"\n"),
              "tags.csv:2: column 4 (scale): '0,5' is no number");
}

TEST_F(Tags, ANameThatIsThereTwiceNamesBothLines)
{
    EXPECT_EQ(mistake(header + "a,1,T,1,1,,\nb,1,T,2,1,,\na,1,T,3,1,,\n"),
              "tags.csv:4: column 1 (name): 'a' is already on line 2");
}

TEST_F(Tags, MistakesInTheHeaderAreFound)
{
    EXPECT_THAT(mistake(""), HasSubstr("tags.csv:1: the header is missing"));
    EXPECT_EQ(mistake("name,registre,address\n"),
              "tags.csv:1: the header lacks the column register");
    EXPECT_EQ(mistake("name,register,address,name\n"),
              "tags.csv:1: column 4 (name): the column is there twice");
    EXPECT_EQ(mistake("name,register\n"), "tags.csv:1: the header lacks the column address");
}

TEST_F(Tags, AColumnThatIsNearlyCalledAsOneOfATagIsRefused)
{
    const std::string known = "name,register,address,";
    const auto refusal = [](const std::string& column, const std::string& meant) {
        return "tags.csv:1: column 4 (" + column + "): no column of a tag; did you mean " + meant +
               "?";
    };
    EXPECT_EQ(mistake(known + "sacle,max\na,R_W,200,0.1,3000\n"), refusal("sacle", "scale"));
    EXPECT_EQ(mistake(known + "Scal\n"), refusal("Scal", "scale"));
    EXPECT_EQ(mistake(known + "maxx\n"), refusal("maxx", "max"));
    EXPECT_EQ(mistake(known + "ofset\n"), refusal("ofset", "offset"));
    EXPECT_EQ(mistake(known + "dezimales\n"), refusal("dezimales", "decimals"));
    EXPECT_EQ(mistake(known + "\" scale \"\n"), refusal(" scale ", "scale"));
    EXPECT_EQ(mistake(known + "\"scale\xC2\xA0\"\n"), refusal("scale\xC2\xA0", "scale"));
    EXPECT_EQ(mistake(known + "Units\n"), refusal("Units", "unit"));
}

TEST_F(Tags, ColumnsOfSomebodyElseAreRemarkedOnce)
{
    std::vector<std::string> remarks;
    const auto remark = [&remarks](const std::string& sentence) { remarks.push_back(sentence); };
    const std::string plain = "a,R_W,1,Meyer,,x,\n";
    EXPECT_EQ(
        parseTags(library, "#\nname,register,address,Owner,ID,State,\n" + plain, "t.csv", remark)
            .size(),
        1u);
    EXPECT_THAT(remarks,
                ::testing::ElementsAre("t.csv:2: no columns of a tag, and not looked at: 4 "
                                       "(Owner), 5 (ID), 6 (State)"));
    remarks.clear();
    parseTags(library, header + "a,1,T,1,1,,\n", "t.csv", remark);
    EXPECT_THAT(remarks, ::testing::IsEmpty());
}

TEST_F(Tags, AFileThatEndsAmidALineIsRefused)
{
    const std::string columns = "name,register,address,count,scale\na,R_W,1,1,2\n";
    EXPECT_EQ(mistake(columns + "speed,R_W,20"),
              "tags.csv:3: the file ends in this line, before column 4 (count); was it cut off?");
    EXPECT_EQ(mistake(columns + "speed,R_W,20,"),
              "tags.csv:3: the file ends in this line, before column 5 (scale); was it cut off?");
    EXPECT_EQ(read(columns + "speed,R_W,20\n").size(), 2u);
    EXPECT_EQ(read(columns + "speed,R_W,20\r").size(), 2u);
    EXPECT_EQ(read(columns + "speed,R_W,20\n# spare").size(), 2u);
}

TEST_F(Tags, ALastValueThatMayBeTheBeginningOfAnotherIsRemarked)
{
    const auto remarks = [&](const std::string& text) {
        std::vector<std::string> told;
        parseTags(library, text, "t.csv",
                  [&told](const std::string& sentence) { told.push_back(sentence); });
        return told;
    };
    const std::string columns = "name,register,address\n";
    EXPECT_THAT(remarks(columns + "a,R_W,1\nspeed,R_W,20"),
                ::testing::ElementsAre("t.csv:3: the file ends without a line end; if it was cut "
                                       "off, '20' is not all of that value"));
    EXPECT_THAT(remarks(columns + "speed,R_W,20\r\n"), ::testing::IsEmpty());
    EXPECT_THAT(remarks(columns + "speed,R_W,\"20\""), ::testing::IsEmpty());
    EXPECT_THAT(remarks(header + "speed,,R_W,20,,,fast"), ::testing::IsEmpty());
    EXPECT_THAT(remarks("name,register,address,unit\nspeed,R_W,20,m"),
                ::testing::SizeIs(1)); // of mm
}

TEST_F(Tags, BrokenQuotesAreFoundWhereTheyStand)
{
    EXPECT_THAT(mistake(header + "a,1,T,1,1,,\nb,1,T,\"2\"x,1,,\n"),
                HasSubstr("tags.csv:3: column 4"));
    EXPECT_THAT(mistake(header + "a,1,T,1,1,,\nb,1,T,2,1,,\"open\n"), HasSubstr("tags.csv:3: "));
}

TEST_F(Tags, AFileThatIsNotThereIsNamed)
{
    EXPECT_EQ(complaint([&] { readTags(library, "/no/such/tags.csv"); }),
              "cannot read the tag file /no/such/tags.csv: No such file or directory");
}

} // namespace

} // namespace dov417
