#include "text/addresses.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

using ::testing::HasSubstr;

class Addresses : public LoadedLibrary {
protected:
    Address parsed(const char* text)
    {
        return parseAddress(library, text);
    }
    // Code and column of the mistake, as "4@6".
    std::string mistake(const char* text)
    {
        try {
            parseAddress(library, text);
        } catch (const AddressFailure& failure) {
            return std::to_string(failure.code) + "@" + std::to_string(failure.column);
        }
        return "none";
    }
};

TEST_F(Addresses, StationIsOneWhereNoneIsGiven)
{
    EXPECT_EQ(parsed("R_W:100"), (Address{1, "R_W", Width::word, 100, 1}));
    EXPECT_EQ(parsed("247/R_W:100"), (Address{247, "R_W", Width::word, 100, 1}));
}

TEST_F(Addresses, RangesNameTheirWords)
{
    EXPECT_EQ(parsed("R_W:100..107"), (Address{1, "R_W", Width::word, 100, 8}));
    EXPECT_EQ(parsed("T:5..5"), (Address{1, "T", Width::word, 5, 1}));
}

TEST_F(Addresses, BitTypesAreWrittenWordPointBit)
{
    EXPECT_EQ(parsed("M_bit:1.5"), (Address{1, "M_bit", Width::bit, 21, 1}));
    EXPECT_EQ(parsed("M_bit:1.0..1.15"), (Address{1, "M_bit", Width::bit, 16, 16}));
    EXPECT_EQ(parsed("R_bit:3999.15"), (Address{1, "R_bit", Width::bit, 63999, 1}));
}

TEST_F(Addresses, ABitNumberAbove15MeansABitOfTheNextWordAsTheLibraryTakesIt)
{
    EXPECT_EQ(parseAddress(library, "M_bit:0.16", BitNumbers::asTheyAreRead),
              (Address{1, "M_bit", Width::bit, 16, 1}));
}

TEST_F(Addresses, ABitThatTheLibraryTakesForAnotherOneIsRefused)
{
    EXPECT_EQ(mistake("M_bit:0.16"), "0@6");
    EXPECT_EQ(mistake("M_bit:1.-5"), "0@6");
    EXPECT_EQ(mistake("M_bit:1.0..1.16"), "0@11");
    EXPECT_EQ(mistake("M_bit:268435457.5"), "0@6");
    EXPECT_THAT(complaint([&] { parsed("M_bit:268435457.5"); }),
                HasSubstr("'268435457.5' would be taken for 1.5; a bit is written WORD.BIT"));
    EXPECT_THAT(complaint([&] { parseAddress(library, 1, "M_bit", "1.16", 1); }),
                HasSubstr("'1.16' would be taken for 2.0"));
    EXPECT_EQ(parsed("M_bit:01.05"), (Address{1, "M_bit", Width::bit, 21, 1}));
}

TEST_F(Addresses, ADoubleWordIsTwoWords)
{
    EXPECT_EQ(parsed("R_D:10"), (Address{1, "R_D", Width::doubleWord, 10, 2}));
    EXPECT_EQ(parsed("2/R_D:10..13"), (Address{2, "R_D", Width::doubleWord, 10, 4}));
    EXPECT_EQ(valueCount(parsed("R_D:10..13")), 2);
    EXPECT_EQ(valueCount(parsed("R_W:10..13")), 4);
}

TEST_F(Addresses, TheHighestDoubleWordReachesTheLastWord)
{
    EXPECT_EQ(parsed("R_D:3998"), (Address{1, "R_D", Width::doubleWord, 3998, 2}));
    EXPECT_EQ(parsed("R_D:3996..3999"), (Address{1, "R_D", Width::doubleWord, 3996, 4}));
    EXPECT_EQ(mistake("R_D:3999"), "2@4");
    EXPECT_EQ(mistake("R_D:3996..4001"), "2@10");
}

TEST_F(Addresses, HalfADoubleWordIsRefused)
{
    EXPECT_EQ(mistake("R_D:10..12"), "0@8");
    EXPECT_EQ(mistake("R_D:10..10"), "0@8");
}

TEST_F(Addresses, TheLibrarysCodesComeWithTheirPlace)
{
    EXPECT_EQ(mistake("R_W:4000"), "2@4");
    EXPECT_EQ(mistake("R_W:3990..4000"), "2@10");
    EXPECT_EQ(mistake("M_bit:127.16"), "2@6");
    EXPECT_EQ(mistake("X:1"), "3@0");
    EXPECT_EQ(mistake("2/X:1..900"), "3@2");
    EXPECT_EQ(mistake("R_W:12ab"), "4@4");
    EXPECT_EQ(mistake("R_W:1..12ab"), "4@7");
    EXPECT_EQ(mistake("R_bit:12"), "4@6");
}

TEST_F(Addresses, MistakesInTheFormAreFoundBeforeTheLibraryIsAsked)
{
    EXPECT_EQ(mistake("R_W"), "0@0");
    EXPECT_EQ(mistake(""), "0@0");
    EXPECT_EQ(mistake("R_W:"), "0@4");
    EXPECT_EQ(mistake("R_W:1.."), "0@7");
    EXPECT_EQ(mistake("R_W:5..3"), "0@7");
    EXPECT_EQ(mistake("248/R_W:1"), "0@0");
    EXPECT_EQ(mistake("-1/R_W:1"), "0@0");
    EXPECT_EQ(mistake("1x/R_W:1"), "0@0");
}

TEST_F(Addresses, NumbersPastEveryLimitAreRefusedAndDoNoHarm)
{
    EXPECT_EQ(mistake("R_W:0..2147483647"), "2@7");
    EXPECT_EQ(mistake("R_W:99999999999"), "4@4");
    EXPECT_EQ(mistake("M_bit:134217728.0"), "2@6");
    EXPECT_EQ(mistake("R_W:-1"), "2@4");
}

TEST_F(Addresses, SentencesNameWhatIsWrongAndWhatWouldBeRight)
{
    const auto why = [this](const char* text) {
        return complaint([&] { parseAddress(library, text); });
    };
    EXPECT_EQ(why("R_W:4000"), "R_W:4000: 4000 is out of range: R_W goes from 0 to 3999");
    EXPECT_EQ(why("X:1"), "X:1: unknown register 'X'; there are I_bit, Q_bit, M_bit, R_bit, I_W, "
                          "Q_W, M_W, R_W, R_D, T, C");
    EXPECT_EQ(why("R_bit:12"),
              "R_bit:12: '12' is no address of R_bit, which is written DDDD.DD, as in 3999.15");
    EXPECT_EQ(checkSentence(library, 1, "R_W", "1"), "R_W holds words, not bits");
    EXPECT_EQ(checkSentence(library, 1, "M_bit", "1"), "M_bit holds bits, not words");
    EXPECT_EQ(checkSentence(library, 5, "R_D", "1"),
              "this kind of value does not fit the 32 bits of R_D");
    EXPECT_EQ(checkSentence(library, 6, "R_W", "1"), "R_W can only be read");
}

TEST_F(Addresses, NothingIsReadFromTheBroadcast)
{
    EXPECT_THAT(complaint([&] { requireAccess(library, parsed("0/R_W:1"), Access::read); }),
                HasSubstr("station 0 is the broadcast"));
    EXPECT_EQ(complaint([&] { requireAccess(library, parsed("0/R_W:1"), Access::write); }), "");
    EXPECT_EQ(complaint([&] { requireAccess(library, parsed("1/R_W:1"), Access::read); }), "");
}

TEST_F(Addresses, ABitOfARegisterIsNotWrittenAsABroadcast)
{
    EXPECT_THAT(complaint([&] { requireAccess(library, parsed("0/R_bit:1.0"), Access::write); }),
                HasSubstr("cannot be written as a broadcast"));
    EXPECT_EQ(complaint([&] { requireAccess(library, parsed("0/M_bit:1.0"), Access::write); }), "");
    EXPECT_EQ(complaint([&] { requireAccess(library, parsed("1/R_bit:1.0"), Access::write); }), "");
}

TEST_F(Addresses, AreWrittenOutInFull)
{
    EXPECT_EQ(toText(library, parsed("R_W:100..107")), "1/R_W:100..107");
    EXPECT_EQ(toText(library, parsed("2/R_D:3998")), "2/R_D:3998..3999");
    EXPECT_EQ(toText(library, parsed("M_bit:1.0..1.15")), "1/M_bit:1.0..1.15");
    EXPECT_EQ(toText(library, parsed("T:5")), "1/T:5");
}

TEST_F(Addresses, ComeFromColumnsWithANumberOfValues)
{
    EXPECT_EQ(parseAddress(library, 3, "R_D", "10", 2),
              (Address{3, "R_D", Width::doubleWord, 10, 4}));
    EXPECT_EQ(parseAddress(library, 1, "M_bit", "1.8", 16),
              (Address{1, "M_bit", Width::bit, 24, 16}));
    EXPECT_EQ(complaint([&] { parseAddress(library, 1, "R_W", "3999", 2); }),
              "R_W:3999: 2 values from 3999 run past the highest address, 3999");
    EXPECT_EQ(parseAddress(library, 1, "R_D", "3998", 1).length, 2);
    EXPECT_THAT(complaint([&] { parseAddress(library, 1, "R_D", "3998", 2); }),
                HasSubstr("run past the highest address, 3998"));
}

TEST_F(Addresses, BitsLieInTheWordsThatHoldThem)
{
    const auto words = [](Width width, int address, int length) {
        const Words found = wordsOf(width, address, length);
        return std::to_string(found.first) + "+" + std::to_string(found.count);
    };
    EXPECT_EQ(words(Width::bit, 20, 5), "1+1");
    EXPECT_EQ(words(Width::bit, 15, 2), "0+2");
    EXPECT_EQ(words(Width::bit, 16, 32), "1+2");
    EXPECT_EQ(words(Width::doubleWord, 10, 4), "10+4");
}

} // namespace

} // namespace dov417
