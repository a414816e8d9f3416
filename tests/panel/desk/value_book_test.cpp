#include "panel/desk/value_book.h"

#include <gmock/gmock.h>

#include "made_views.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

int valueOf(const ValueBook& book, const Address& address)
{
    const View* const view = book.find(address);
    return view ? view->value.at(0) : -1;
}

TEST(ValueBook, KnowsAValueByItsAddressAlone)
{
    ValueBook book;
    book.watch(1, {registerAt(0), registerAt(1), registerAt(0, 2)});
    EXPECT_THAT(
        book.apply(batchOf(1, {goodView(registerAt(0, 2), 22), goodView(registerAt(1), 11)})),
        ElementsAre(registerAt(0, 2), registerAt(1)));
    EXPECT_EQ(valueOf(book, registerAt(0)), -1);
    EXPECT_EQ(valueOf(book, registerAt(1)), 11);
    EXPECT_EQ(valueOf(book, registerAt(0, 2)), 22);
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::neverRead);
    EXPECT_EQ(book.standing(registerAt(1)).state, ValueState::good);
}

TEST(ValueBook, DropsWhatWasToldOfAnOlderGeneration)
{
    ValueBook book;
    book.watch(1, {registerAt(0)});
    book.watch(2, {registerAt(0)});
    EXPECT_THAT(book.apply(batchOf(1, {goodView(registerAt(0), 1)})), IsEmpty());
    EXPECT_EQ(valueOf(book, registerAt(0)), -1);
}

TEST(ValueBook, HasNothingForGoodAfterASilenceBeforeItIsReadAgain)
{
    ValueBook book;
    book.watch(1, {registerAt(0)});
    const View before = goodView(registerAt(0), 1);
    book.apply(batchOf(1, {before}));
    book.setSilent(true);
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::old);
    book.heardAgain(before.lastGood + std::chrono::seconds(60));
    EXPECT_THAT(book.apply(batchOf(1, {before})), IsEmpty());
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::old);
    View again = before;
    again.lastGood += std::chrono::seconds(61);
    EXPECT_THAT(book.apply(batchOf(1, {again})), ElementsAre(registerAt(0)));
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::good);
}

TEST(ValueBook, DropsWhatIsNotWatched)
{
    ValueBook book;
    book.watch(1, {registerAt(0)});
    EXPECT_THAT(book.apply(batchOf(1, {goodView(registerAt(7), 1)})), IsEmpty());
    EXPECT_FALSE(book.isWatched(registerAt(7)));
    EXPECT_EQ(valueOf(book, registerAt(7)), -1);
}

TEST(ValueBook, KeepsAValueThatStaysWatchedAndForgetsOneThatDoesNot)
{
    ValueBook book;
    book.watch(1, {registerAt(0), registerAt(1)});
    book.apply(batchOf(1, {goodView(registerAt(0), 5), goodView(registerAt(1), 6)}));
    book.watch(2, {registerAt(1)});
    book.watch(3, {registerAt(1), registerAt(0)});
    EXPECT_EQ(valueOf(book, registerAt(0)), -1);
    EXPECT_EQ(valueOf(book, registerAt(1)), 6);
}

TEST(ValueBook, ShowsAValueAsBeingWrittenUntilEachWriteHasItsOutcome)
{
    ValueBook book;
    book.watch(1, {registerAt(0)});
    book.apply(batchOf(1, {goodView(registerAt(0), 5)}));
    book.writeBegan(1, {registerAt(0)});
    book.writeBegan(2, {registerAt(0)});
    book.writeEnded({1, Result()});
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::beingWritten);
    EXPECT_THAT(book.writeEnded({2, Result()}), ElementsAre(registerAt(0)));
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::good);
    EXPECT_EQ(valueOf(book, registerAt(0)), 5) << "only the controller says what it holds";
    EXPECT_THAT(book.writeEnded({2, Result()}), IsEmpty());
}

TEST(ValueBook, SaysThatAWriteFailedAndWhyUntilTheNextOne)
{
    ValueBook book;
    book.watch(1, {registerAt(0)});
    View old = goodView(registerAt(0), 5);
    old.isOld = true;
    book.apply(batchOf(1, {old}));
    book.writeBegan(1, {registerAt(0)});
    book.writeEnded({1, Result::refused("exception 2")});
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::failed);
    EXPECT_EQ(book.standing(registerAt(0)).reason, "exception 2");
    EXPECT_TRUE(book.standing(registerAt(0)).isOld);
    book.writeBegan(2, {registerAt(0)});
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::beingWritten);
    book.writeEnded({2, Result()});
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::old);
}

TEST(ValueBook, KeepsAWriteUnderWayWhenSomethingElseIsWatched)
{
    ValueBook book;
    book.watch(1, {registerAt(0)});
    book.writeBegan(1, {registerAt(0)});
    book.watch(2, {registerAt(0), registerAt(1)});
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::beingWritten);
    book.writeEnded({1, Result()});
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::neverRead);
}

TEST(ValueBook, HoldsNothingForGoodWhileTheLinesThreadSaysNothing)
{
    ValueBook book;
    book.watch(1, {registerAt(0), registerAt(1)});
    book.apply(batchOf(1, {goodView(registerAt(0), 5)}));
    book.setSilent(true);
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::old);
    EXPECT_EQ(book.standing(registerAt(1)).state, ValueState::neverRead);
    book.setSilent(false);
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::good);
}

TEST(ValueBook, HoldsNothingForGoodWithoutAnOpenLineEvenWhereWhatMadeItOldWasNeverTold)
{
    ValueBook book;
    book.watch(1, {registerAt(0)});
    book.apply(batchOf(1, {goodView(registerAt(0), 5)}));
    book.watch(3, {registerAt(0)});
    LineBatch closed = batchOf(2, {});
    closed.state.phase = LinePhase::closed;
    EXPECT_THAT(book.apply(closed), ElementsAre(registerAt(0)));
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::old);
    EXPECT_EQ(valueOf(book, registerAt(0)), 5);
    EXPECT_THAT(book.apply(batchOf(3, {})), ElementsAre(registerAt(0)));
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::good);
}

TEST(ValueBook, ForgetsEverythingOfAnotherLine)
{
    ValueBook book;
    book.watch(1, {registerAt(0), registerAt(1)});
    book.apply(batchOf(1, {goodView(registerAt(0), 5)}));
    book.writeBegan(4, {registerAt(0)});
    book.forget();
    EXPECT_EQ(valueOf(book, registerAt(0)), -1);
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::neverRead);
    EXPECT_THAT(book.writeEnded({4, Result::refused("another line is opened")}), IsEmpty());
    EXPECT_EQ(book.standing(registerAt(0)).state, ValueState::neverRead);
}

} // namespace

} // namespace dov417
