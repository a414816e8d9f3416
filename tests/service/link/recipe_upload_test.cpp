// A recipe upload: the values of each reply go to the cache and to the host's recipe buffer.
#include <algorithm>
#include <gmock/gmock.h>

#include "world.h"

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// Reply of station 1 to a read of `count` registers: first, first + 1, ...
QByteArray registers(int count, int first)
{
    QByteArray bytes = hex("01 03");
    bytes.append(static_cast<char>(2 * count));
    for (int i = 0; i < count; ++i) {
        bytes.append(static_cast<char>((first + i) >> 8));
        bytes.append(static_cast<char>((first + i) & 0xFF));
    }
    return withCrc(bytes);
}

class RecipeUpload : public DriverTest {
protected:
    RecipeUpload()
    {
        recipeBuffer.assign(recipeBuffer.size(), 0xEEEE);
    }

    // The poll that asks for the first recipe request.
    std::string upload(QVector<_RCP_VAR_PRO> records)
    {
        intf_setRcpAddress(records);
        hostBlock[uploadFlag] = 1;
        return poll();
    }

    std::vector<int> buffer(int from, int count) const
    {
        return std::vector<int>(recipeBuffer.begin() + from, recipeBuffer.begin() + from + count);
    }

    int untouchedWords() const
    {
        return static_cast<int>(std::count(recipeBuffer.begin(), recipeBuffer.end(), 0xEEEE));
    }
};

TEST_F(RecipeUpload, PutsTheValuesIntoTheBufferAndAnnouncesEachByItsBufferWord)
{
    upload({recipeRecord(7, "R_W", 100, 3, 40)});
    EXPECT_EQ(reply(withCrc("01 03 06 12 34 00 05 FF FE")), 1);
    EXPECT_THAT(buffer(39, 5), ElementsAre(0xEEEE, 0x1234, 0x0005, 0xFFFE, 0xEEEE));
    EXPECT_EQ(notices(), (Notices{{0, -1, "RWI", 40}, {0, -1, "RWI", 41}, {0, -1, "RWI", 42}}));
}

TEST_F(RecipeUpload, AnnouncesValuesThatAreTheSameAsBefore)
{
    upload({recipeRecord(7, "R_W", 100, 2, 0)});
    EXPECT_EQ(reply(withCrc("01 03 04 00 00 00 00")), 1);
    EXPECT_THAT(buffer(0, 2), ElementsAre(0, 0));
    EXPECT_EQ(notices(), (Notices{{0, -1, "RWI", 0}, {0, -1, "RWI", 1}}));
}

TEST_F(RecipeUpload, FillsTheCacheFirst)
{
    plan({key("R_W", 100, 1), key("R_W", 101, 1)});
    std::vector<std::string> seen;
    whenTold([&](const Notice& notice) {
        seen.push_back(notice.name + " " + std::to_string(notice.address) + ": " +
                       read("R_W", 100, 2));
    });
    upload({recipeRecord(7, "R_W", 100, 2, 5)});
    EXPECT_EQ(reply(withCrc("01 03 04 12 34 56 78")), 1);
    EXPECT_THAT(seen, ElementsAre("R_W 100: 34 12 00 00", "R_W 101: 34 12 78 56",
                                  "RWI 5: 34 12 78 56", "RWI 6: 34 12 78 56"));
}

TEST_F(RecipeUpload, StoresEachWordBeforeItAnnouncesIt)
{
    std::vector<std::vector<int>> seen;
    whenTold([&](const Notice&) { seen.push_back(buffer(0, 2)); });
    upload({recipeRecord(7, "R_W", 100, 2, 0)});
    reply(withCrc("01 03 04 12 34 56 78"));
    EXPECT_THAT(seen,
                ElementsAre(std::vector<int>{0x1234, 0xEEEE}, std::vector<int>{0x1234, 0x5678}));
}

TEST_F(RecipeUpload, OfCoilsTakesTheFirstByteAsTheLowOne)
{
    upload({recipeRecord(7, "M_W", 2, 1, 7)});
    EXPECT_EQ(toHex(polled.frame, 6), "01 01 10 20 00 10");
    EXPECT_EQ(reply(withCrc("01 01 02 34 12")), 1);
    EXPECT_THAT(buffer(7, 1), ElementsAre(0x1234));
    EXPECT_EQ(read("M_W", 2, 1), "34 12");
}

TEST_F(RecipeUpload, GoesRequestByRequest)
{
    EXPECT_EQ(upload({recipeRecord(7, "R_W", 100, 1, 0), recipeRecord(7, "T", 3, 1, 9)}),
              frame("01 03 05 64 00 01"));
    EXPECT_EQ(reply(withCrc("01 03 02 00 11")), 1);
    EXPECT_EQ(driver.recipeIndex, 1);
    EXPECT_EQ(hostBlock[uploadFlag], 1);
    EXPECT_EQ(poll(), frame("01 03 01 83 00 01"));
    EXPECT_EQ(reply(withCrc("01 03 02 00 22")), 1);
    EXPECT_THAT(buffer(0, 1), ElementsAre(0x11));
    EXPECT_THAT(buffer(9, 1), ElementsAre(0x22));
    EXPECT_EQ(notices(), (Notices{{0, -1, "RWI", 0}, {0, -1, "RWI", 9}}));
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(hostBlock[uploadFlag], 0);
}

TEST_F(RecipeUpload, MergedRecordsLieTogetherInTheBuffer)
{
    upload({recipeRecord(7, "R_W", 104, 2, 24), recipeRecord(7, "R_W", 100, 4, 20)});
    EXPECT_EQ(reply(registers(6, 0x200)), 1);
    EXPECT_THAT(buffer(19, 8),
                ElementsAre(0xEEEE, 0x200, 0x201, 0x202, 0x203, 0x204, 0x205, 0xEEEE));
}

TEST_F(RecipeUpload, MergedRecordsFollowTheFirstOnesPlaceEvenAgainstTheirOwn)
{
    upload({recipeRecord(7, "R_W", 100, 2, 20), recipeRecord(7, "R_W", 102, 2, 500)});
    EXPECT_EQ(reply(registers(4, 0x200)), 1);
    EXPECT_THAT(buffer(20, 5), ElementsAre(0x200, 0x201, 0x202, 0x203, 0xEEEE));
    EXPECT_THAT(buffer(500, 2), Each(0xEEEE));
    EXPECT_EQ(untouchedWords(), static_cast<int>(recipeBuffer.size()) - 4);
}

TEST_F(RecipeUpload, ARegisterOfTwoRecordsIsStoredAndAnnouncedOnce)
{
    upload({recipeRecord(7, "R_W", 100, 3, 20), recipeRecord(7, "R_W", 101, 3, 60)});
    EXPECT_EQ(reply(registers(4, 0x200)), 1);
    EXPECT_THAT(buffer(20, 4), ElementsAre(0x200, 0x201, 0x202, 0x203));
    EXPECT_EQ(
        notices(),
        (Notices{{0, -1, "RWI", 20}, {0, -1, "RWI", 21}, {0, -1, "RWI", 22}, {0, -1, "RWI", 23}}));
}

TEST_F(RecipeUpload, PiecesOfALongRecordGoBehindOneAnother)
{
    upload({recipeRecord(7, "R_W", 0, 300, 10)});
    EXPECT_EQ(reply(registers(128, 0x1000)), 1);
    EXPECT_EQ(poll(), frame("01 03 05 80 00 80"));
    EXPECT_EQ(reply(registers(128, 0x2000)), 1);
    EXPECT_EQ(poll(), frame("01 03 06 00 00 2C"));
    EXPECT_EQ(reply(registers(44, 0x3000)), 1);
    EXPECT_THAT(buffer(9, 2), ElementsAre(0xEEEE, 0x1000));
    EXPECT_THAT(buffer(137, 2), ElementsAre(0x107F, 0x2000));
    EXPECT_THAT(buffer(265, 2), ElementsAre(0x207F, 0x3000));
    EXPECT_THAT(buffer(309, 2), ElementsAre(0x302B, 0xEEEE));
    const Notices told = notices();
    ASSERT_EQ(told.size(), 300u);
    EXPECT_EQ(told.front(), (Notice{0, -1, "RWI", 10}));
    EXPECT_EQ(told.back(), (Notice{0, -1, "RWI", 309}));
}

TEST_F(RecipeUpload, ARecordBehindALongOneFollowsThePlaceOfTheLongOne)
{
    upload({recipeRecord(7, "R_W", 0, 300, 10), recipeRecord(7, "R_W", 300, 20, 700)});
    reply(registers(128, 0x1000));
    poll();
    reply(registers(128, 0x2000));
    EXPECT_EQ(poll(), frame("01 03 06 00 00 40"));
    EXPECT_EQ(reply(registers(64, 0x3000)), 1);
    EXPECT_THAT(buffer(309, 3), ElementsAre(0x302B, 0x302C, 0x302D));
    EXPECT_THAT(buffer(329, 2), ElementsAre(0x303F, 0xEEEE));
    EXPECT_THAT(buffer(700, 20), Each(0xEEEE));
}

TEST_F(RecipeUpload, ASecondRunBehindALongOneHasItsOwnPlace)
{
    upload({recipeRecord(7, "R_W", 0, 200, 10), recipeRecord(7, "R_W", 200, 100, 700)});
    reply(registers(128, 0x1000));
    EXPECT_EQ(poll(), frame("01 03 05 80 00 48"));
    reply(registers(72, 0x2000));
    EXPECT_EQ(poll(), frame("01 03 05 C8 00 64"));
    EXPECT_EQ(reply(registers(100, 0x3000)), 1);
    EXPECT_THAT(buffer(209, 2), ElementsAre(0x2047, 0xEEEE));
    EXPECT_THAT(buffer(699, 2), ElementsAre(0xEEEE, 0x3000));
    EXPECT_THAT(buffer(799, 2), ElementsAre(0x3063, 0xEEEE));
}

TEST_F(RecipeUpload, OfDoubleWordsCountsRegisters)
{
    upload({recipeRecord(7, "R_D", 10, 4, 3)});
    EXPECT_EQ(reply(withCrc("01 03 08 12 34 56 78 9A BC DE F0")), 1);
    EXPECT_THAT(buffer(3, 4), ElementsAre(0x1234, 0x5678, 0x9ABC, 0xDEF0));
    EXPECT_EQ(read("R_D", 10, 4), "34 12 78 56 BC 9A F0 DE");
}

TEST_F(RecipeUpload, OfRBitsIsAReadOfWordsAndPatchesNothing)
{
    EXPECT_EQ(upload({recipeRecord(7, "R_bit", 35, 1, 3)}), frame("01 03 05 23 00 01"));
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_THAT(buffer(3, 1), ElementsAre(0x1234));
    EXPECT_EQ(read("R_W", 35, 1), "34 12");
}

TEST_F(RecipeUpload, LeavesOutTheValuesBeforeTheBuffersStart)
{
    upload({recipeRecord(7, "R_W", 100, 3, -2)});
    EXPECT_EQ(reply(registers(3, 0x200)), 1);
    EXPECT_EQ(read("R_W", 100, 3), "00 02 01 02 02 02");
    EXPECT_THAT(buffer(0, 1), ElementsAre(0x202));
    EXPECT_EQ(untouchedWords(), static_cast<int>(recipeBuffer.size()) - 1);
    EXPECT_EQ(notices(), (Notices{{0, -1, "RWI", 0}}));
}

TEST_F(RecipeUpload, WithoutABufferFillsOnlyTheCache)
{
    intf_initProperty(hostBlock.data(), 0, nullptr, nullptr, "7#0#0#3#10", &hostMutex);
    EXPECT_EQ(upload({recipeRecord(7, "R_W", 100, 2, 0)}), frame("01 03 05 64 00 02"));
    EXPECT_EQ(reply(registers(2, 0x200)), 1);
    EXPECT_EQ(read("R_W", 100, 2), "00 02 01 02");
    EXPECT_THAT(notices(), IsEmpty());
    EXPECT_EQ(hostBlock[uploadFlag], 0);
}

TEST_F(RecipeUpload, WithoutACallbackFillsTheBuffer)
{
    intf_setAddrValueChangeCallBack(nullptr);
    upload({recipeRecord(7, "R_W", 100, 2, 0)});
    EXPECT_EQ(reply(registers(2, 0x200)), 1);
    EXPECT_THAT(buffer(0, 2), ElementsAre(0x200, 0x201));
}

TEST_F(RecipeUpload, OtherReadsOfTheSameRegistersLeaveTheBufferAlone)
{
    setRecipe({recipeRecord(7, "R_W", 100, 2, 0)});
    plan({key("R_W", 100, 2)});
    poll();
    EXPECT_EQ(reply(registers(2, 0x200)), 1);
    EXPECT_EQ(untouchedWords(), static_cast<int>(recipeBuffer.size()));
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 100}, {7, 1, "R_W", 101}}));
}

// A plan that changed while the reply was outstanding: what no longer exists is not copied.

TEST_F(RecipeUpload, IntoAPlanThatIsGoneFillsOnlyTheCache)
{
    upload({recipeRecord(7, "R_W", 100, 2, 0)});
    QVector<_RCP_VAR_PRO> none;
    intf_setRcpAddress(none);
    EXPECT_EQ(reply(registers(2, 0x200)), 1);
    EXPECT_EQ(read("R_W", 100, 2), "00 02 01 02");
    EXPECT_EQ(untouchedWords(), static_cast<int>(recipeBuffer.size()));
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(RecipeUpload, IntoAPlanOfOtherAddressesFillsOnlyTheCache)
{
    upload({recipeRecord(7, "R_W", 100, 2, 0)});
    QVector<_RCP_VAR_PRO> other = {recipeRecord(7, "R_W", 500, 2, 0),
                                   recipeRecord(7, "R_W", 600, 2, 2)};
    intf_setRcpAddress(other);
    EXPECT_EQ(reply(registers(2, 0x200)), 1);
    EXPECT_EQ(read("R_W", 100, 2), "00 02 01 02");
    EXPECT_EQ(untouchedWords(), static_cast<int>(recipeBuffer.size()));
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(RecipeUpload, IntoAShorterPlanFillsOnlyTheCache)
{
    upload({recipeRecord(7, "R_W", 100, 2, 0), recipeRecord(7, "R_W", 200, 2, 10)});
    reply(registers(2, 0x200));
    poll();
    notices();
    QVector<_RCP_VAR_PRO> shorter = {recipeRecord(7, "R_W", 100, 2, 0)};
    intf_setRcpAddress(shorter);
    EXPECT_EQ(reply(registers(2, 0x300)), 1);
    EXPECT_EQ(read("R_W", 200, 1), "00 03");
    EXPECT_THAT(buffer(10, 2), Each(0xEEEE));
    EXPECT_THAT(buffer(0, 2), ElementsAre(0x200, 0x201));
    EXPECT_THAT(notices(), IsEmpty());
    EXPECT_EQ(hostBlock[uploadFlag], 0);
}

TEST_F(RecipeUpload, IntoListsThatWereEmptiedFromOutsideFillsOnlyTheCache)
{
    for (const int emptied : {0, 1, 2}) {
        upload({recipeRecord(7, "R_W", 100, 2, 0)});
        if (emptied == 0) {
            driver.recipeVars.clear();
        } else if (emptied == 1) {
            driver.recipeRequests.clear();
        } else {
            driver.groupStarts.clear();
        }
        EXPECT_EQ(reply(registers(2, 0x200)), 1) << emptied;
        EXPECT_EQ(untouchedWords(), static_cast<int>(recipeBuffer.size())) << emptied;
    }
    EXPECT_EQ(read("R_W", 100, 2), "00 02 01 02");
}

TEST_F(RecipeUpload, StopsWhereACallbackReplacesThePlan)
{
    whenTold([&](const Notice&) {
        QVector<_RCP_VAR_PRO> other = {recipeRecord(7, "R_W", 500, 2, 50)};
        intf_setRcpAddress(other);
    });
    upload({recipeRecord(7, "R_W", 100, 3, 0)});
    EXPECT_EQ(reply(registers(3, 0x200)), 1);
    EXPECT_THAT(buffer(0, 3), ElementsAre(0x200, 0xEEEE, 0xEEEE));
    EXPECT_EQ(notices().size(), 1u);
}

TEST_F(RecipeUpload, CopiesNothingIntoARecipeThatCameWithAnInitialisation)
{
    plan({key("R_W", 200, 1)});
    upload({recipeRecord(7, "R_W", 200, 1, 0)});
    whenTold([&](const Notice&) {
        configure();
        QVector<_RCP_VAR_PRO> same = {recipeRecord(7, "R_W", 200, 1, 0)};
        intf_setRcpAddress(same);
    });
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 200}}));
    EXPECT_EQ(recipeBuffer[0], 0xEEEE);
}

TEST_F(RecipeUpload, StopsWhereACallbackTakesTheBufferAway)
{
    whenTold([&](const Notice&) {
        intf_initProperty(nullptr, 0, nullptr, nullptr, "7#0#0#3#10", nullptr);
    });
    upload({recipeRecord(7, "R_W", 100, 3, 0)});
    reply(registers(3, 0x200));
    EXPECT_THAT(buffer(0, 3), ElementsAre(0x200, 0xEEEE, 0xEEEE));
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_TRUE(driver.sendList.isEmpty());
}

} // namespace
