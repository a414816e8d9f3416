#include "panel/recipes/recipe_table.h"

#include <QTemporaryDir>
#include <fstream>
#include <iterator>

#include "loaded_library.h"
#include "made_views.h"
#include "panel/recipes/recipe_model.h"
#include "panel/recipes/recipe_words.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ARecipeTable : public LoadedLibrary {
protected:
    void watch(const std::vector<std::string>& texts)
    {
        std::vector<Item> items;
        for (const std::string& text : texts)
            items.push_back(Items(library, ItemSource()).find(text, Access::read));
        table.setTags(panelTags(library, items));
    }
    // The tag speed, R_W:100, of 0 to 100.
    void watchLimited()
    {
        Item speed = Items(library, ItemSource()).find("R_W:100", Access::read);
        speed.name = "speed";
        speed.limits = {0, 100};
        table.setTags(panelTags(library, {speed}));
    }
    const RecipeRow& row(std::size_t place) const
    {
        return table.rows().at(place);
    }
    RecipeNews news(RecipeKind kind, const std::vector<RecipeReading>& readings) const
    {
        RecipeNews news;
        news.kind = kind;
        news.hasEnded = true;
        news.readings = readings;
        news.asOf = Clock::now();
        return news;
    }

    std::string file() const
    {
        return folder_.filePath("saved.json").toStdString();
    }
    std::string saved() const
    {
        std::ifstream in(file());
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    std::string comparison(int place)
    {
        const RecipeModel model(table);
        return model.index(place, RecipeModel::comparison).data().toString().toStdString();
    }

    RecipeTable table{library};

private:
    QTemporaryDir folder_;
};

TEST_F(ARecipeTable, KnowsOfEachValueWhenItWasRead)
{
    watch({"R_W:1", "R_W:7"});
    const auto shares = table.shares(RecipeKind::read);
    table.began(shares, RecipeKind::read);
    RecipeNews read = news(RecipeKind::read, {{{10, 0}, ""}, {{11, 0}, ""}});
    read.asOfEach = {read.asOf + std::chrono::seconds(1), read.asOf + std::chrono::seconds(2)};
    table.ended(shares, read, true);
    EXPECT_EQ(row(0).readAt, read.asOfEach.at(0));
    EXPECT_EQ(row(1).readAt, read.asOfEach.at(1));
}

TEST_F(ARecipeTable, SaysOfACancelledDownloadNoMoreThanWhatTheControllerHolds)
{
    watch({"R_W:1", "R_W:7"});
    table.edit(0, "10");
    table.edit(1, "12");
    const auto shares = table.shares(RecipeKind::download);
    table.began(shares, RecipeKind::download);
    RecipeNews cancelled = news(RecipeKind::download, {{{10, 0}, ""}, {{3, 0}, ""}});
    cancelled.isCancelled = true;
    table.ended(shares, cancelled, true);
    EXPECT_EQ(row(0).fate, RecipeFate::held);
    EXPECT_EQ(row(1).fate, RecipeFate::notHeld);
    EXPECT_EQ(row(1).controller, (ValueBytes{3, 0}));
    EXPECT_EQ(row(1).buffer, (ValueBytes{12, 0}));
}

TEST_F(ARecipeTable, TellsOfEachValueWhatTheControllerHoldsAfterADownload)
{
    watch({"R_W:1..2", "R_W:7"});
    table.edit(0, "10");
    table.edit(1, "11");
    table.edit(2, "12");
    const auto shares = table.shares(RecipeKind::download);
    ASSERT_EQ(shares.size(), 2U);
    table.began(shares, RecipeKind::download);
    EXPECT_EQ(row(0).fate, RecipeFate::waiting);
    table.ended(shares,
                news(RecipeKind::download, {{{10, 0, 99, 0}, ""}, {{}, "the station is silent"}}),
                true);
    EXPECT_EQ(row(0).fate, RecipeFate::written);
    EXPECT_EQ(row(1).fate, RecipeFate::different);
    EXPECT_EQ(row(1).controller, (ValueBytes{99, 0}));
    EXPECT_EQ(row(1).buffer, (ValueBytes{11, 0}));
    EXPECT_EQ(row(2).fate, RecipeFate::unknown);
    EXPECT_EQ(row(2).reason, "the station is silent");
    EXPECT_TRUE(row(2).controller.empty());
}

TEST_F(ARecipeTable, FindsTheValuesAgainWhateverIsWatchedMeanwhile)
{
    watch({"R_W:1", "R_W:2"});
    const auto shares = table.shares(RecipeKind::upload);
    table.began(shares, RecipeKind::upload);
    watch({"R_W:9", "R_W:2"});
    table.ended(shares, news(RecipeKind::upload, {{{1, 0}, ""}, {{2, 0}, ""}}), true);
    EXPECT_TRUE(row(0).controller.empty());
    EXPECT_TRUE(row(0).buffer.empty());
    EXPECT_EQ(row(1).controller, (ValueBytes{2, 0}));
    EXPECT_EQ(row(1).buffer, (ValueBytes{2, 0}));
}

TEST_F(ARecipeTable, KeepsWhatIsTypedWhileAnUploadIsUnderWay)
{
    watch({"R_W:1", "R_W:2"});
    const auto shares = table.shares(RecipeKind::upload);
    table.began(shares, RecipeKind::upload);
    table.edit(0, "77");
    table.ended(shares, news(RecipeKind::upload, {{{1, 0}, ""}, {{2, 0}, ""}}), true);
    EXPECT_EQ(row(0).controller, (ValueBytes{1, 0}));
    EXPECT_EQ(row(0).buffer, (ValueBytes{77, 0}));
    EXPECT_EQ(row(1).buffer, (ValueBytes{2, 0}));
}

TEST_F(ARecipeTable, KeepsNothingThatWasReadOnAnotherLine)
{
    watch({"R_W:1"});
    table.edit(0, "5");
    const auto shares = table.shares(RecipeKind::upload);
    table.began(shares, RecipeKind::upload);
    table.ended(shares, news(RecipeKind::upload, {{{1, 0}, ""}}), false);
    EXPECT_TRUE(row(0).controller.empty());
    EXPECT_EQ(row(0).buffer, (ValueBytes{5, 0}));
    EXPECT_EQ(row(0).fate, RecipeFate::unknown);
}

TEST_F(ARecipeTable, MovesAnItemThatIsNotThereAsAWholeValueByValue)
{
    watch({"R_W:1..3"});
    table.edit(0, "5");
    table.edit(2, "7");
    const auto shares = table.shares(RecipeKind::download);
    ASSERT_EQ(shares.size(), 2U);
    EXPECT_EQ(shares.at(1).entry.item.name, "1/R_W:3");
    EXPECT_EQ(shares.at(1).entry.item.address, registerAt(3));
    EXPECT_EQ(shares.at(1).entry.data, (ValueBytes{7, 0}));
    table.edit(1, "6");
    EXPECT_EQ(table.shares(RecipeKind::download).size(), 1U);
}

TEST_F(ARecipeTable, MovesNoTwoValuesToOnePlace)
{
    watch({"M_W:1", "M_bit:1.3", "R_D:10", "R_W:11"});
    table.edit(0, "8");
    table.edit(1, "1");
    table.edit(2, "65536");
    table.edit(3, "1");
    EXPECT_EQ(table.shares(RecipeKind::download).size(), 4U);
    table.edit(1, "0");
    EXPECT_THAT(complaint([this]() { table.shares(RecipeKind::download); }),
                HasSubstr("1/M_W:1 and 1/M_bit:1.3 want different values of the same place"));
    table.edit(1, "");
    table.edit(3, "2");
    EXPECT_THAT(complaint([this]() { table.shares(RecipeKind::download); }),
                HasSubstr("want different values"));
    for (std::size_t place : {0U, 2U, 3U})
        table.edit(place, "");
    EXPECT_THAT(complaint([this]() { table.shares(RecipeKind::download); }),
                HasSubstr("the buffer is empty"));
}

TEST_F(ARecipeTable, LoadsNoFileThatWantsTwoThingsOfOnePlace)
{
    const QTemporaryDir folder;
    const std::string file = folder.filePath("recipe.json").toStdString();
    std::ofstream(file) << R"({"R_W:1": 4, "1/R_W:1": 9})";
    watch({"R_W:1"});
    table.edit(0, "7");
    EXPECT_THAT(complaint([&]() { table.load(file); }), HasSubstr("want different values"));
    EXPECT_EQ(table.rows().at(0).buffer, (ValueBytes{7, 0}));
}

// Whoever names the address in a file means the tag's own machine all the same.
TEST_F(ARecipeTable, DownloadsNothingOutsideALimitThoughAFileNamesTheAddressAlone)
{
    const QTemporaryDir folder;
    const std::string file = folder.filePath("recipe.json").toStdString();
    watchLimited();
    std::ofstream(file) << R"({"R_W:100": 9999})";
    table.load(file);
    EXPECT_EQ(row(0).buffer, (ValueBytes{0x0F, 0x27}));
    EXPECT_THAT(complaint([this]() { table.shares(RecipeKind::download); }),
                HasSubstr("speed: value '9999': above the maximum, 100"));
    EXPECT_EQ(table.shares(RecipeKind::upload).size(), 1U);
    std::ofstream(file) << R"({"R_W:100": 100})";
    table.load(file);
    EXPECT_EQ(table.shares(RecipeKind::download).size(), 1U);
}

// What the controller holds is kept as it is; it is only never sent there.
TEST_F(ARecipeTable, SavesAndLoadsWhatTheControllerHoldsBeyondALimit)
{
    watchLimited();
    const auto shares = table.shares(RecipeKind::upload);
    table.began(shares, RecipeKind::upload);
    table.ended(shares, news(RecipeKind::upload, {{{120, 0}, ""}}), true);
    table.save(file());
    EXPECT_THAT(saved(), HasSubstr("\"speed\": 120"));
    table.clear();
    table.load(file());
    EXPECT_EQ(row(0).buffer, (ValueBytes{120, 0}));
    EXPECT_EQ(row(0).file, (ValueBytes{120, 0}));
    EXPECT_THAT(comparison(0), StartsWith("outside its limits: value '120': above the maximum, "));
    EXPECT_THAT(complaint([this]() { table.shares(RecipeKind::download); }),
                HasSubstr("speed: value '120': above the maximum, 100"));
    EXPECT_THAT(complaint([this]() { table.edit(0, "120.0"); }), HasSubstr("120"));
    table.edit(0, "100");
    EXPECT_EQ(table.shares(RecipeKind::download).size(), 1U);
    EXPECT_THAT(comparison(0), Not(HasSubstr("outside")));
}

// Hex says nothing of how many words one value has.
TEST_F(ARecipeTable, LoadsAgainWhatItSavedOfFourWordsInHex)
{
    Items find(library, ItemSource());
    std::vector<Item> items{find.find("R_D:600@uint64", Access::read),
                            find.find("R_D:700..707@int64:high-first", Access::read)};
    items.front().format.notation = Notation::hex; // as its menu would
    items.back().format.notation = Notation::binary;
    table.setTags(panelTags(library, items));
    table.edit(0, "0x1122334455667788");
    table.edit(1, "0b11");
    table.edit(2, "0b101");
    const ValueBytes first = row(0).buffer;
    const ValueBytes last = row(2).buffer;
    table.save(file());
    EXPECT_THAT(saved(), HasSubstr("\"1/R_D:600..603@uint64\": 1234605616436508552"));
    EXPECT_THAT(saved(), HasSubstr("\"1/R_D:700..707@uint64:high-first\""));
    table.clear();
    table.load(file());
    EXPECT_EQ(row(0).buffer, first);
    EXPECT_EQ(row(1).buffer.size(), 8U);
    EXPECT_EQ(row(2).buffer, last);
    EXPECT_EQ(table.rows().size(), 3U);
}

TEST_F(ARecipeTable, SavesByItsAddressWhatNobodyWatchesAnyMore)
{
    watchLimited();
    table.edit(0, "50");
    watch({"R_W:7"});
    EXPECT_TRUE(table.isChanged());
    EXPECT_EQ(table.unwatchedInRecipe(), 1U);
    table.edit(0, "8");
    table.save(file());
    EXPECT_THAT(saved(), HasSubstr("\"1/R_W:100\": 50"));
    EXPECT_THAT(saved(), HasSubstr("\"1/R_W:7\": 8"));
    EXPECT_FALSE(table.isChanged());
    table.load(file());
    EXPECT_EQ(table.unwatchedInRecipe(), 0U);
    EXPECT_EQ(row(0).buffer, (ValueBytes{8, 0}));
    EXPECT_EQ(row(1).value.label.name, "1/R_W:100");
    EXPECT_EQ(row(1).buffer, (ValueBytes{50, 0}));
    watchLimited();
    EXPECT_EQ(row(0).file, row(0).buffer);
}

TEST_F(ARecipeTable, SavesWhatNobodyWatchesThoughNothingElseIsInTheBuffer)
{
    watchLimited();
    table.edit(0, "50");
    table.setTags(PanelTags());
    table.save(file());
    EXPECT_THAT(saved(), HasSubstr("\"1/R_W:100\": 50"));
    EXPECT_FALSE(table.isChanged());
}

TEST_F(ARecipeTable, KeepsBothValuesOfAnAddressThatIsWatchedTwice)
{
    watch({"R_W:100", "R_W:100@hex"});
    table.edit(0, "5");
    watch({"R_W:7", "R_W:100", "R_W:100@hex"});
    EXPECT_EQ(row(1).buffer, (ValueBytes{5, 0}));
    EXPECT_TRUE(row(2).buffer.empty());
    table.edit(1, "");
    table.edit(2, "0x0006");
    watch({"R_W:100@hex", "R_W:7", "R_W:100"});
    EXPECT_EQ(row(0).buffer, (ValueBytes{6, 0}));
    EXPECT_TRUE(row(2).buffer.empty());
    watch({"R_W:100@bcd"});
    EXPECT_EQ(row(0).buffer, (ValueBytes{6, 0})) << "in whatever format";
    EXPECT_EQ(table.rows().size(), 1U);
}

TEST_F(ARecipeTable, EndsBothValuesOfAnAddressThatIsWatchedTwice)
{
    watch({"R_W:100", "R_W:100@hex"});
    const auto shares = table.shares(RecipeKind::upload);
    ASSERT_EQ(shares.size(), 2U);
    table.began(shares, RecipeKind::upload);
    for (std::size_t place : {0U, 1U})
        EXPECT_EQ(row(place).fate, RecipeFate::waiting);
    table.ended(shares, news(RecipeKind::upload, {{{1, 0}, ""}, {{1, 0}, ""}}), true);
    for (std::size_t place : {0U, 1U}) {
        EXPECT_EQ(row(place).fate, RecipeFate::read);
        EXPECT_EQ(row(place).buffer, (ValueBytes{1, 0}));
    }
}

TEST_F(ARecipeTable, LeavesOutWhatCanOnlyBeRead)
{
    const QTemporaryDir folder;
    const std::string file = folder.filePath("recipe.json").toStdString();
    std::ofstream(file) << R"({"R_W:1": 4, "R_W:2": 5})";
    Items find(library, ItemSource());
    PanelTags tags =
        panelTags(library, {find.find("R_W:1", Access::read), find.find("R_W:2", Access::read)});
    tags.values.front().locked = "it can only be read";
    table.setTags(tags);
    EXPECT_EQ(table.load(file), 1U);
    EXPECT_EQ(row(0).file, (ValueBytes{4, 0}));
    EXPECT_FALSE(row(0).isInRecipe());
    EXPECT_TRUE(row(1).isInRecipe());
    EXPECT_THAT(complaint([this]() { table.edit(0, "7"); }), HasSubstr("only be read"));
    EXPECT_EQ(table.shares(RecipeKind::read).size(), 2U);
    EXPECT_EQ(table.shares(RecipeKind::upload).size(), 1U);
    EXPECT_EQ(table.shares(RecipeKind::download).size(), 1U);
}

TEST_F(ARecipeTable, TakesFromPollingWhatIsGoodAndLaterThanWhatItHas)
{
    watch({"R_W:1"});
    ValueBook book;
    book.watch(1, {registerAt(1)});
    book.apply(batchOf(1, {goodView(registerAt(1), 3)}));
    table.look(book);
    EXPECT_EQ(row(0).controller, (ValueBytes{3}));
    EXPECT_TRUE(row(0).isCurrent);
    View old = goodView(registerAt(1), 4);
    old.lastGood = row(0).readAt;
    old.isOld = true;
    book.apply(batchOf(1, {old}));
    table.look(book);
    EXPECT_EQ(row(0).controller, (ValueBytes{3}));
    EXPECT_FALSE(row(0).isCurrent);
    table.forgetController();
    EXPECT_TRUE(row(0).controller.empty());
}

// Whoever looks only then sees what the page of values shows.
TEST_F(ARecipeTable, TakesWhatWasReadLastOfAControllerThatHasGone)
{
    watch({"R_W:1"});
    ValueBook book;
    book.watch(1, {registerAt(1)});
    View view = goodView(registerAt(1), 3);
    const auto goes = [&]() {
        book.apply(batchOf(1, {view}));
        view.isOld = true;
        book.apply(batchOf(1, {view}));
        table.look(book);
    };
    goes();
    EXPECT_EQ(row(0).controller, (ValueBytes{3}));
    EXPECT_EQ(row(0).readAt, view.lastGood);
    EXPECT_FALSE(row(0).isCurrent);
    view = goodView(registerAt(1), 4);
    view.lastGood = row(0).readAt + std::chrono::seconds(1);
    goes();
    EXPECT_EQ(row(0).controller, (ValueBytes{4})) << "it was read later";
    EXPECT_FALSE(row(0).isCurrent);
    view = goodView(registerAt(1), 5);
    view.lastGood = row(0).readAt - std::chrono::seconds(1);
    goes();
    EXPECT_EQ(row(0).controller, (ValueBytes{4})) << "what it has is later";
}

TEST_F(ARecipeTable, ForgetsWhatMayHaveBeenReadFromAnotherAddress)
{
    watch({"R_W:1", "R_W:2"});
    ValueBook book;
    book.watch(1, {registerAt(1), registerAt(2)});
    book.apply(batchOf(1, {goodView(registerAt(1), 3), goodView(registerAt(2), 7)}));
    table.look(book);
    View unknown;
    unknown.address = registerAt(1);
    book.apply(batchOf(1, {unknown, goodView(registerAt(2), 8)}));
    table.doubt();
    for (const std::size_t each : {0U, 1U})
        EXPECT_TRUE(row(each).controller.empty()) << "no reply says that it was this one's";
    table.look(book);
    EXPECT_TRUE(row(0).controller.empty());
    EXPECT_FALSE(row(0).isCurrent);
    EXPECT_EQ(row(1).controller, (ValueBytes{8})) << "read since";
    book.apply(batchOf(1, {goodView(registerAt(1), 4)}));
    table.look(book);
    EXPECT_EQ(row(0).controller, (ValueBytes{4}));
}

class AnUploadedRecipe : public ARecipeTable {
protected:
    AnUploadedRecipe()
    {
        watch({"R_W:1", "R_W:7"});
        upload(3);
        table.edit(1, "12");
    }
    void upload(unsigned char first)
    {
        const auto shares = table.shares(RecipeKind::upload);
        table.began(shares, RecipeKind::upload);
        table.ended(shares, news(RecipeKind::upload, {{{first, 0}, ""}, {{4, 0}, ""}}), true);
    }
    // What a download or a file of it is refused for.
    std::string refusal()
    {
        const std::string why = complaint([this]() { table.shares(RecipeKind::download); });
        EXPECT_EQ(complaint([this]() { table.save(file()); }), why);
        return why;
    }
};

TEST_F(AnUploadedRecipe, GoesNowhereWhereRepliesCameTwiceSince)
{
    EXPECT_EQ(refusal(), "");
    table.doubt();
    EXPECT_THAT(refusal(), StartsWith("1/R_W:1: replies came twice"));
    EXPECT_EQ(row(0).buffer, (ValueBytes{3, 0})) << "nothing is lost";
    EXPECT_EQ(row(0).fate, RecipeFate::unknown);
    EXPECT_EQ(row(1).fate, RecipeFate::none) << "it was typed";
}

TEST_F(AnUploadedRecipe, IsCertainOnceItIsUploadedAgain)
{
    table.doubt();
    upload(3);
    EXPECT_EQ(refusal(), "");
}

TEST_F(AnUploadedRecipe, IsCertainOnceItIsTypedAlsoAsItWas)
{
    table.doubt();
    table.edit(0, "3");
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(row(0).fate, RecipeFate::none);
}

TEST_F(AnUploadedRecipe, StaysInDoubtWhateverBecomesOfTheLineAndOfWhatIsWatched)
{
    table.doubt();
    table.forgetController();
    watch({"R_W:7"});
    EXPECT_NE(refusal(), "");
    watch({"R_W:1"});
    EXPECT_NE(refusal(), "");
}

TEST_F(AnUploadedRecipe, IsInDoubtAgainWhereItIsTakenBack)
{
    const std::vector<RecipeCell> before = table.buffer();
    upload(5);
    table.doubt();
    table.edit(0, "9");
    table.edit(1, "8");
    EXPECT_EQ(refusal(), "");
    table.put(before);
    EXPECT_NE(refusal(), "");
    EXPECT_EQ(row(0).fate, RecipeFate::unknown) << "of the upload before the last";
    EXPECT_EQ(row(1).buffer, (ValueBytes{12, 0})) << "typed";
    EXPECT_EQ(row(1).fate, RecipeFate::none);
}

TEST_F(AnUploadedRecipe, IsCertainWhereItBeganSince)
{
    table.doubt();
    const auto shares = table.shares(RecipeKind::upload);
    table.began(shares, RecipeKind::upload);
    table.doubt(); // told of late
    EXPECT_EQ(row(0).fate, RecipeFate::waiting);
    table.ended(shares, news(RecipeKind::upload, {{{6, 0}, ""}, {{4, 0}, ""}}), true);
    EXPECT_EQ(row(0).buffer, (ValueBytes{6, 0}));
    EXPECT_EQ(refusal(), "");
}

TEST_F(AnUploadedRecipe, StaysInDoubtOverTheEndOfTheProgram)
{
    table.doubt();
    const OrderedJson kept = toJson({"", "", table.bufferToKeep()});
    RecipeTable next(library);
    next.setTags(panelTags(library, {Items(library, ItemSource()).find("R_W:1", Access::read),
                                     Items(library, ItemSource()).find("R_W:7", Access::read)}));
    next.put(next.takenUp(recipeCopy(kept).values).cells);
    EXPECT_EQ(next.rows().at(0).buffer, (ValueBytes{3, 0}));
    EXPECT_THAT(complaint([&]() { next.shares(RecipeKind::download); }),
                StartsWith("1/R_W:1: replies came twice"));
    next.edit(0, "3");
    EXPECT_EQ(complaint([&]() { next.shares(RecipeKind::download); }), "");
    EXPECT_EQ(next.rows().at(1).buffer, (ValueBytes{12, 0}));
}

TEST_F(AnUploadedRecipe, IsNotDoubtedForTheRepliesOfTheNextLine)
{
    table.forgetController();
    table.doubt();
    EXPECT_EQ(refusal(), "");
}

// Cancelled when its last word was just confirmed: what the rows say is counted, whoever wrote it.
TEST(TheEndOfARecipe, CountsWhatIsHeldAndWhatIsNot)
{
    RecipeNews news;
    news.kind = RecipeKind::download;
    news.isCancelled = true;
    news.hasEnded = true;
    RecipeRow held;
    held.fate = RecipeFate::held;
    RecipeRow notHeld;
    notHeld.fate = RecipeFate::notHeld;
    EXPECT_EQ(recipeEndText(news, {held, held}, true).toStdString(),
              "\u2713 2 value(s) were written and read back.");
    EXPECT_THAT(recipeEndText(news, {held, notHeld}, true).toStdString(),
                HasSubstr("1 value(s) read back otherwise"));
}

// Cancelled twice: nothing was read back, and nothing is said of rows that know.
TEST(TheEndOfARecipe, PromisesNoRowsThatSayWhatTheControllerHolds)
{
    RecipeNews news;
    news.kind = RecipeKind::download;
    news.hasEnded = true;
    news.problems = {"it was cancelled"};
    news.readings = {{{}, "it was cancelled"}};
    EXPECT_THAT(recipeEndText(news, {}, true).toStdString(), Not(HasSubstr("The rows say")));
    news.readings.push_back({{1, 0}, std::string()});
    EXPECT_THAT(recipeEndText(news, {}, true).toStdString(), HasSubstr("The rows say"));
}

} // namespace

} // namespace dov417
