#include "scan_world.h"

namespace dov417 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ScanEarTest : public ::testing::Test {
protected:
    void come(const char* hex)
    {
        ear.add(QByteArray::fromHex(hex));
    }
    void comeWhole(const char* hex)
    {
        ear.add(withCrc(QByteArray::fromHex(hex)));
    }

    // "answer 3 to 0", "foreign 3", "noise 7"
    std::vector<std::string> pieces(bool isSilent = true)
    {
        std::vector<std::string> texts;
        while (const std::optional<ScanPiece> piece = ear.take(isSilent))
            texts.push_back(piece->kind == ScanPiece::answer
                                ? "answer " + std::to_string(piece->station) + " to " +
                                      std::to_string(piece->question)
                            : piece->kind == ScanPiece::foreign
                                ? "foreign " + std::to_string(piece->station)
                                : "noise " + std::to_string(piece->bytes.size()));
        return texts;
    }

    ScanEar ear{questionsOfTheTest()};
};

TEST_F(ScanEarTest, TellsWhichQuestionIsAnsweredAndByWhom)
{
    comeWhole("0301021234");
    comeWhole("0903021234");
    comeWhole("058102");
    comeWhole("058302");
    EXPECT_THAT(pieces(false),
                ElementsAre("answer 3 to 0", "answer 9 to 1", "answer 5 to 0", "answer 5 to 1"));
}

TEST_F(ScanEarTest, TakesNoAnswerWithABadCrc)
{
    come("03010212345678");
    EXPECT_THAT(pieces(), ElementsAre("noise 7"));
    come("0581021234");
    EXPECT_THAT(pieces(), ElementsAre("noise 5"));
}

TEST_F(ScanEarTest, TakesNoAnswerOfAnotherLengthOrOfNoStation)
{
    comeWhole("0303041234567800");
    EXPECT_THAT(pieces(), ElementsAre("foreign 3"));
    comeWhole("0003021234");
    EXPECT_THAT(pieces(), ElementsAre("foreign 0"));
    comeWhole("F803021234");
    EXPECT_THAT(pieces(), ElementsAre("foreign 248"));
}

TEST_F(ScanEarTest, WaitsForTheRest)
{
    come("0301");
    EXPECT_THAT(pieces(false), IsEmpty());
    EXPECT_FALSE(ear.isEmpty());
    ear.add(withCrc(QByteArray::fromHex("0301021234")).mid(2));
    EXPECT_THAT(pieces(false), ElementsAre("answer 3 to 0"));
    EXPECT_TRUE(ear.isEmpty());
}

TEST_F(ScanEarTest, DropsTheEchoOfAQuestionOnce)
{
    const QByteArray question = questionsOfTheTest().at(0).frameTo(3);
    ear.asks(question);
    ear.add(question.left(3));
    EXPECT_THAT(pieces(false), IsEmpty());
    ear.add(question.mid(3));
    EXPECT_THAT(pieces(), IsEmpty());
    ear.add(question);
    EXPECT_THAT(pieces(), ElementsAre("foreign 3")) << "somebody else asks the same";
}

TEST_F(ScanEarTest, FindsAnAnswerBehindNoiseAndBehindAQuestionOfSomebodyElse)
{
    come("00FF");
    comeWhole("0301021234");
    EXPECT_THAT(pieces(false), ElementsAre("noise 2", "answer 3 to 0"));
    comeWhole("030300000001");
    comeWhole("0303021234");
    EXPECT_THAT(pieces(false), ElementsAre("foreign 3", "answer 3 to 1"));
}

TEST_F(ScanEarTest, KeepsNoFlood)
{
    ear.add(QByteArray(1024, '\x55'));
    EXPECT_THAT(pieces(false), ElementsAre("noise 1024"));
}

} // namespace

} // namespace dov417
