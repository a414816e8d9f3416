#include "model_check.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace dov417 {

namespace {

// Deeper: dov417_late_model.
TEST(Model, NoPathLeadsToAWrongValue)
{
    const ModelResult result = checkEveryKind(5);
    EXPECT_EQ(result.wrong, "") << textOf(result);
    EXPECT_GT(result.goodReplies, 10000);
    std::printf("%s\n", textOf(result).c_str());
}

TEST(Model, NoPathLeadsToAWrongValueOnAnAdapterThatEchoes)
{
    const ModelResult result = checkEchoes(6);
    EXPECT_EQ(result.wrong, "") << textOf(result);
    EXPECT_GT(result.goodReplies, 3000);
    std::printf("%s\n", textOf(result).c_str());
}

TEST(Model, NoPathLeadsToAWrongValueOnceAReplyHasComeTwice)
{
    const ModelResult result = checkCopies(6);
    EXPECT_EQ(result.wrong, "") << textOf(result);
    EXPECT_GT(result.goodReplies, 1000);
    std::printf("%s\n", textOf(result).c_str());
}

// Nothing else can be told at once where a reply comes twice: it is what the check can find.
TEST(Model, FindsThePathToAWrongValueWhereAReplyComesTwice)
{
    ModelSettings settings;
    settings.depth = 5;
    settings.repliesTwice = true;
    const ModelResult result = checkModel(settings);
    EXPECT_EQ(result.wrong, "the value of another address is shown");
    EXPECT_EQ(result.path,
              (std::vector<std::string>{"read a", "reply of 1 comes, and once more later", "read b",
                                        "reply of 1 comes"}));
}

} // namespace

} // namespace dov417
