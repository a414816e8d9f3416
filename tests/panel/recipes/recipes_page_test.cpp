#include "panel/recipes/recipes_page.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QTest>
#include <algorithm>
#include <functional>

#include "complaint.h"
#include "panel/values/values_page.h"
#include "panel_world.h"
#include "session/recipe_file.h"

namespace dov417 {

namespace {

using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const tagFile = "name,register,address,count,format,scale,unit,min,max\n"
                            "speed,R_W,100,1,,0.1,m/min,0,500\n"
                            "preset,R_W,110,3,,,,,\n"
                            "code,R_W,120,1,bcd,,,,\n"
                            "level,R_D,130,1,float,,,,\n"
                            "run,M_bit,1.5,2,,,,,\n"
                            "label,R_W,140,3,text,,,,\n";

class TheRecipesPage : public PanelWorld {
protected:
    TheRecipesPage()
    {
        std::ofstream(path("tags.csv")) << tagFile;
        source.tags = path("tags.csv");
        options.set = {"R_W:100=1500",   "R_W:110=1",      "R_W:111=2",
                       "R_W:112=3",      "R_W:120=0x0042", "M_bit:1.6=1",
                       "R_W:140=0x4142", "R_W:130=0x0000", "R_W:131=0x3FC0"};
    }
    void show()
    {
        page = std::make_unique<RecipesPage>(desk);
        QObject::connect(page.get(), &PanelPage::told, page.get(),
                         [this](const QString& text) { told = text.toStdString(); });
        page->resize(1150, 700);
        page->show();
        table = page->findChild<QTableView*>("recipe");
        page->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(page.get()));
    }
    void watchTags()
    {
        desk.setItems(Items(library, source).tagged(Access::read));
    }
    std::string path(const std::string& name) const
    {
        return folder.filePath(QString::fromStdString(name)).toStdString();
    }
    void writeFile(const std::string& name, const std::string& text) const
    {
        std::ofstream(path(name)) << text;
    }
    bool load(const std::string& name) const
    {
        return page->loadFile(QString::fromStdString(path(name)));
    }
    bool save(const std::string& name) const
    {
        return page->saveFile(QString::fromStdString(path(name)));
    }
    int rowOf(const std::string& name) const
    {
        for (int row = 0; row < table->model()->rowCount(); ++row)
            if (table->model()->index(row, RecipeModel::name).data().toString().toStdString() ==
                name)
                return row;
        ADD_FAILURE() << "no row " << name;
        return 0;
    }
    std::string cell(const std::string& name, RecipeModel::Column column) const
    {
        return table->model()->index(rowOf(name), column).data().toString().toStdString();
    }
    std::vector<std::string> column(RecipeModel::Column column) const
    {
        return shownIn(*table, column);
    }
    std::string result() const
    {
        return page->findChild<QLabel*>("recipeResult")->text().toStdString();
    }
    QPushButton* button(const char* name) const
    {
        return page->findChild<QPushButton*>(name);
    }
    void click(const char* name) const
    {
        ASSERT_TRUE(button(name)->isEnabled()) << name;
        QTest::mouseClick(button(name), Qt::LeftButton);
    }
    void ended() const
    {
        ASSERT_TRUE(waitUntil([this]() { return !desk.recipeIsUnderWay(); }));
    }
    void answer(QMessageBox::StandardButton button, const char* question)
    {
        QTimer::singleShot(0, page.get(), [button, question]() {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_TRUE(box);
            EXPECT_THAT(box->text().toStdString(), HasSubstr(question));
            QTest::mouseClick(box->button(button), Qt::LeftButton);
        });
    }
    // Types into the buffer's cell.
    void edit(const std::string& name, const char* text)
    {
        const QModelIndex index = table->model()->index(rowOf(name), RecipeModel::buffer);
        table->setCurrentIndex(index);
        table->edit(index);
        QWidget* const editor = QApplication::focusWidget();
        ASSERT_TRUE(editor && editor != table);
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        EXPECT_TRUE(waitUntil([this]() { return table->hasFocus(); }));
    }
    // What a file holds for whoever reads it with these tags.
    std::map<std::string, std::vector<unsigned char>> readWithTags(const std::string& name)
    {
        std::map<std::string, std::vector<unsigned char>> data;
        for (const RecipeEntry& entry : readRecipe(path(name), Items(library, source)))
            data[entry.item.name] = entry.data;
        return data;
    }

    ItemSource source;
    std::unique_ptr<RecipesPage> page;
    QTableView* table = nullptr;
    std::string told;
};

TEST_F(TheRecipesPage, ShowsControllerFileAndBufferSideBySideAndMarksDifferences)
{
    watchTags();
    show();
    EXPECT_THAT(column(RecipeModel::controller), Each("?"));
    writeFile("recipe.json", R"({"speed": 150.0, "preset": [1, 9, 3]})");
    ASSERT_TRUE(load("recipe.json"));
    EXPECT_EQ(cell("speed", RecipeModel::comparison), "? controller");
    open();
    ASSERT_TRUE(waitUntil([this]() { return cell("label", RecipeModel::controller) != "?"; }));
    EXPECT_EQ(cell("speed", RecipeModel::controller), "150 m/min");
    EXPECT_EQ(cell("speed", RecipeModel::file), "150 m/min");
    EXPECT_EQ(cell("speed", RecipeModel::buffer), "150 m/min");
    EXPECT_EQ(cell("speed", RecipeModel::comparison), "= the same in all");
    EXPECT_EQ(cell("preset[1]", RecipeModel::controller), "\u2260 2");
    EXPECT_EQ(cell("preset[1]", RecipeModel::comparison), "\u2260 controller");
    EXPECT_THAT(cell("preset[1]", RecipeModel::age), StartsWith("\u2713 "));
    EXPECT_EQ(cell("code", RecipeModel::controller), "42");
    EXPECT_EQ(cell("code", RecipeModel::comparison), "");
    edit("preset[1]", "2");
    EXPECT_EQ(cell("preset[1]", RecipeModel::comparison), "= controller, \u2260 file");
    EXPECT_EQ(cell("preset[1]", RecipeModel::file), "\u2260 9");
    page->findChild<QCheckBox*>("differentOnly")->setChecked(true);
    EXPECT_THAT(column(RecipeModel::name), ElementsAre("preset[1]"));
}

TEST_F(TheRecipesPage, ShowsWhatThePageOfValuesShowsThoughItIsOpenedOnceTheControllerHasGone)
{
    watchTags();
    ValuesPage valuesPage(desk);
    valuesPage.show();
    open();
    controller.reset();
    ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::away; }));
    show();
    const auto& values = *valuesPage.findChild<QTableView*>("values");
    EXPECT_EQ(column(RecipeModel::controller), shownIn(values, ValuesModel::value));
    EXPECT_EQ(cell("speed", RecipeModel::controller), "150 m/min");
    EXPECT_THAT(column(RecipeModel::age), Each(StartsWith("\u25f7 ")));
    EXPECT_THAT(shownIn(values, ValuesModel::state), Each("\u25f7 old"));
}

TEST_F(TheRecipesPage, SaysOfAnUploadThatRepliesCameTwiceSince)
{
    watchTags();
    show();
    open();
    click("upload");
    ended();
    emit desk.repliesDoubted(Clock::now());
    EXPECT_THAT(column(RecipeModel::outcome), Each(StartsWith("? not known: replies came twice")));
    EXPECT_FALSE(save("recipe.json"));
    EXPECT_THAT(told, HasSubstr("replies came twice"));
}

TEST_F(TheRecipesPage, UploadsWhatOthersReadFromItsFile)
{
    watchTags();
    show();
    open();
    click("upload");
    ended();
    EXPECT_THAT(result(), StartsWith("\u2713 9 value(s) were read"));
    EXPECT_EQ(cell("label", RecipeModel::buffer), cell("label", RecipeModel::controller));
    EXPECT_THAT(column(RecipeModel::outcome), Each("\u2713 read"));
    ASSERT_TRUE(save("recipe.json")) << told;
    using Bytes = std::vector<unsigned char>;
    auto data = readWithTags("recipe.json");
    EXPECT_EQ(data.size(), 6U);
    EXPECT_EQ(data["speed"], (Bytes{0xDC, 0x05}));
    EXPECT_EQ(data["preset"], (Bytes{1, 0, 2, 0, 3, 0}));
    EXPECT_EQ(data["code"], (Bytes{0x42, 0x00}));
    EXPECT_EQ(data["level"], (Bytes{0x00, 0x00, 0xC0, 0x3F}));
    EXPECT_EQ(data["run"], (Bytes{0, 1}));
    EXPECT_EQ(data["label"], (Bytes{0x42, 0x41, 0, 0, 0, 0}));
}

TEST_F(TheRecipesPage, WritesTheSameBytesIntoItsFileHoweverValuesAreShown)
{
    watchTags();
    watch({"R_W:200@bcd", "R_D:202@float:high-first", "R_W:210..211"});
    std::vector<Item> items = desk.tags().items;
    for (Item item : Items(library, source).tagged(Access::read)) {
        if (item.name == "code")
            item.format.notation = Notation::unsignedNumber; // as its menu would
        if (item.name == "preset")
            item.format.notation = Notation::bcd;
        items.push_back(item);
    }
    desk.setItems(items);
    options.set.insert(options.set.end(), {"R_W:200=0x0012", "R_W:202=0x4048", "R_W:203=0xF5C3",
                                           "R_W:210=10", "R_W:211=11"});
    show();
    open();
    click("upload");
    ended();
    ASSERT_TRUE(save("recipe.json")) << told;
    auto data = readWithTags("recipe.json");
    using Bytes = std::vector<unsigned char>;
    EXPECT_EQ(data["code"], (Bytes{0x42, 0x00}));
    EXPECT_EQ(data["preset"], (Bytes{1, 0, 2, 0, 3, 0}));
    EXPECT_EQ(data["1/R_W:200"], (Bytes{0x12, 0x00}));
    EXPECT_EQ(data["1/R_D:202..203"], (Bytes{0x48, 0x40, 0xC3, 0xF5}));
    EXPECT_EQ(data["1/R_W:210..211"], (Bytes{10, 0, 11, 0}));
    edit("code", "7");
    ASSERT_TRUE(load("recipe.json")) << told;
    EXPECT_EQ(cell("code", RecipeModel::buffer), std::to_string(0x42));
    EXPECT_THAT(column(RecipeModel::comparison), Each("= the same in all"));
}

TEST_F(TheRecipesPage, DownloadsOnceItIsUnlockedAndAskedAndReadsBack)
{
    watchTags();
    show();
    writeFile("recipe.json", R"({"speed": 20, "preset[1]": 77, "run": [1, 0], "R_W:300": 5})");
    ASSERT_TRUE(load("recipe.json")) << told;
    open();
    EXPECT_FALSE(button("download")->isEnabled());
    EXPECT_THAT(
        complaint([this]() { desk.moveRecipe(desk.lineNumber(), RecipeKind::download, {}); }),
        HasSubstr("writing is locked"));
    unlock();
    answer(QMessageBox::No, "Write 5 value(s) of the buffer to the controller on ");
    click("download");
    EXPECT_FALSE(desk.recipeIsUnderWay());
    answer(QMessageBox::Yes, "Write 5 value(s)");
    click("download");
    EXPECT_TRUE(desk.recipeIsUnderWay());
    EXPECT_EQ(desk.writesUnderWay(), 5U);
    ended();
    EXPECT_THAT(result(), StartsWith("\u2713 5 value(s) were written and read back"));
    for (const char* const name : {"speed", "preset[1]", "run[0]", "run[1]", "1/R_W:300"})
        EXPECT_EQ(cell(name, RecipeModel::outcome), "\u2713 written, read back") << name;
    EXPECT_EQ(cell("preset[0]", RecipeModel::outcome), "");
    EXPECT_EQ(cell("1/R_W:300", RecipeModel::controller), "5");
    EXPECT_EQ(desk.writesUnderWay(), 0U);
    EXPECT_EQ(held("R_W", 100), 200);
}

TEST_F(TheRecipesPage, ChangesNothingBesideTheRecipe)
{
    watchTags();
    show();
    writeFile("recipe.json", R"({"preset[1]": 77, "run": [1, 0]})");
    ASSERT_TRUE(load("recipe.json"));
    open();
    unlock();
    answer(QMessageBox::Yes, "Write 3 value(s)");
    click("download");
    ended();
    EXPECT_EQ(held("R_W", 111), 77);
    EXPECT_EQ(held("R_W", 110), 1);
    EXPECT_EQ(held("R_W", 112), 3);
    EXPECT_EQ(held("R_W", 100), 1500);
    EXPECT_EQ(held("M_W", 1), 1 << 5);
}

// The controller is silent from some moment on, or its port goes.
TEST_F(TheRecipesPage, SaysHowMuchWasDoneWhereItIsCutOff)
{
    watch({"R_W:1000..1999"});
    show();
    std::string values = "1";
    for (int i = 1; i < 1000; ++i)
        values += ", " + std::to_string(i);
    writeFile("recipe.json", "{\"R_W:1000..1999\": [" + values + "]}");
    ASSERT_TRUE(load("recipe.json")) << told;
    setup.retries = 1;
    options.baudLimit = true; // so that there is a middle
    options.line = parseRtuFormat("38400,8,EVEN,1");
    bool isToStop = false;
    std::size_t words = 0;
    QObject::connect(&desk, &PanelDesk::recipeTold, page.get(), [&](const RecipeNews& news) {
        words = news.progress.words;
        if (words == 0 || news.hasEnded || !controller)
            return;
        if (isToStop)
            stopController(true);
        else
            controller.reset();
    });
    for (const bool stop : {true, false}) {
        isToStop = stop;
        open();
        unlock();
        words = 0;
        answer(QMessageBox::Yes, "Write 1000 value(s)");
        click("download");
        ended();
        EXPECT_GT(words, 0U);
        EXPECT_LT(words, 1000U);
        EXPECT_THAT(result(), StartsWith("\u2717 It was broken off: "));
        EXPECT_THAT(result(),
                    HasSubstr(std::to_string(words) + " of 1000 words had been confirmed."));
        EXPECT_THAT(column(RecipeModel::outcome), Each(StartsWith("? not known: ")));
        if (stop)
            stopController(false);
    }
}

// Long enough that there is a middle.
class ALongRecipe : public TheRecipesPage {
protected:
    ALongRecipe()
    {
        options.baudLimit = true;
        options.line = parseRtuFormat("38400,8,EVEN,1");
    }
    void begin()
    {
        watch({"R_W:1000..1999"});
        show();
        QObject::connect(&desk, &PanelDesk::recipeTold, page.get(), [this](const RecipeNews& news) {
            heard.push_back(news);
            if (cancelWhen && cancelWhen(news))
                cancel();
        });
        open();
    }
    void beginDownload()
    {
        std::string values = "1001";
        for (int i = 1001; i < 2000; ++i)
            values += ", " + std::to_string(i + 1);
        writeFile("recipe.json", "{\"R_W:1000..1999\": [" + values + "]}");
        begin();
        ASSERT_TRUE(load("recipe.json"));
        unlock();
        answer(QMessageBox::Yes, "Write 1000 value(s)");
        click("download");
        page->activateWindow(); // again, as after the question
        ASSERT_TRUE(QTest::qWaitForWindowActive(page.get()));
    }
    void cancel()
    {
        cancelWhen = nullptr;
        EXPECT_TRUE(button("cancelRecipe")->isVisible());
        if (isByClick)
            QTest::mouseClick(button("cancelRecipe"), Qt::LeftButton);
        else
            QTest::keyClick(page.get(), Qt::Key_Escape);
    }
    // The R_W that the controller held when it was ended.
    std::map<int, int> heldWords()
    {
        desk.end();
        controller.reset();
        std::ifstream file(options.dumpFile);
        const nlohmann::json dump = nlohmann::json::parse(file);
        std::map<int, int> held;
        for (const auto& [first, values] : dump.at("1").at("R_W").items()) {
            int word = std::stoi(first);
            for (const auto& value : values)
                held[word++] = value.get<int>();
        }
        return held;
    }
    void isPolledAgain() const
    {
        const long long cycles = desk.state().cycles;
        EXPECT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 2; }));
        EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
        EXPECT_EQ(desk.state().phase, LinePhase::open);
    }

    std::vector<RecipeNews> heard;
    bool isByClick = false;
    std::function<bool(const RecipeNews&)> cancelWhen;
};

bool isInTheMiddle(const RecipeNews& news)
{
    return !news.hasEnded && !news.isReadingBack && news.progress.words > 0;
}

// The driver's cache holds what is on its way to the controller, which a recipe would read.
TEST_F(ALongRecipe, AndWritesOfOtherPagesExcludeEachOther)
{
    begin();
    unlock();
    const PanelValue& value = desk.tags().values.front();
    click("upload");
    EXPECT_THAT(complaint([&]() { desk.write(value, "5"); }), HasSubstr("a recipe is under way"));
    EXPECT_EQ(desk.writes().size(), 0U);
    ended();
    desk.write(value, "5");
    EXPECT_THAT(complaint([&]() { desk.moveRecipe(desk.lineNumber(), RecipeKind::read, {}); }),
                HasSubstr("values are being written"));
    EXPECT_FALSE(desk.recipeIsUnderWay());
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
}

TEST_F(ALongRecipe, IsDownloadedNoFurtherOnceItIsCancelledAndSaysWhatTheControllerHolds)
{
    options.line = parseRtuFormat("4800,8,EVEN,1"); // so that a slow page cancels in time, too
    beginDownload();
    cancelWhen = isInTheMiddle;
    ended();
    EXPECT_TRUE(button("cancelRecipe")->isHidden());
    const RecipeNews& end = heard.back();
    EXPECT_TRUE(end.isCancelled);
    EXPECT_GT(end.progress.words, 0U);
    EXPECT_LT(end.progress.words, 1000U);
    EXPECT_THAT(result(), StartsWith("\u2717 It was broken off: it was cancelled. "));
    EXPECT_THAT(result(), HasSubstr("of 1000 words had been confirmed. The rows say"));
    isPolledAgain();
    const int last = table->model()->rowCount() - 1;
    EXPECT_EQ(cell("1/R_W:1000", RecipeModel::outcome), "\u2713 the controller holds it");
    EXPECT_EQ(table->model()->index(last, RecipeModel::outcome).data().toString().toStdString(),
              "\u2717 the controller holds 0");
    EXPECT_EQ(desk.writesUnderWay(), 0U);
    const std::vector<std::string> outcomes = column(RecipeModel::outcome);
    // Each row says of its word what the controller's own memory has; nothing was made up.
    const std::map<int, int> words = heldWords();
    for (int i = 0; i < 1000; ++i) {
        const auto word = words.find(1000 + i);
        const int value = word == words.end() ? 0 : word->second;
        EXPECT_THAT(value, AnyOf(0, 1001 + i));
        EXPECT_THAT(outcomes.at(static_cast<std::size_t>(i)),
                    StartsWith(value == 1001 + i ? "\u2713" : "\u2717"))
            << i;
    }
}

TEST_F(ALongRecipe, IsNotReadBackEitherWhereItIsCancelledTwice)
{
    beginDownload();
    cancelWhen = isInTheMiddle;
    ASSERT_TRUE(waitUntil([this]() { return !heard.empty() && heard.back().isReadingBack; }));
    EXPECT_THAT(result(), HasSubstr("It was cancelled: "));
    cancel();
    ended();
    EXPECT_THAT(result(), HasSubstr("of 1000 words had been confirmed."));
    EXPECT_THAT(column(RecipeModel::outcome), Each(StartsWith("? not known: ")));
    isPolledAgain();
}

TEST_F(ALongRecipe, KnowsWhenTheLastOfItWasReadAndNotOnlyWhenItBegan)
{
    watch({"R_W:5"});
    show();
    std::string names;
    for (int i = 0; i < 1000; ++i)
        names += (i > 0 ? ", \"R_W:" : "\"R_W:") + std::to_string(1000 + i) + "\": 0";
    writeFile("recipe.json", "{" + names + "}");
    open();
    ASSERT_TRUE(load("recipe.json")) << told;
    RecipeNews end;
    QObject::connect(&desk, &PanelDesk::recipeTold, page.get(),
                     [&end](const RecipeNews& news) { end = news; });
    click("upload");
    ended();
    ASSERT_EQ(end.asOfEach.size(), 1001U);
    const auto [first, last] = std::minmax_element(end.asOfEach.begin(), end.asOfEach.end());
    EXPECT_GE(*first, end.asOf);
    EXPECT_LT(*first, *last); // in more requests than one
}

TEST_F(ALongRecipe, LeavesTheBufferAsItWasWhereTheUploadIsCancelledByAClick)
{
    cancelWhen = isInTheMiddle;
    isByClick = true;
    begin();
    click("upload");
    ended();
    EXPECT_THAT(result(), HasSubstr("it was cancelled"));
    EXPECT_THAT(result(), HasSubstr("the buffer is as it was"));
    EXPECT_THAT(column(RecipeModel::buffer), Each(""));
    isPolledAgain();
    click("upload");
    ended();
    EXPECT_THAT(result(), StartsWith("\u2713 1000 value(s) were read"));
}

TEST_F(TheRecipesPage, EndsWithTheLineAndKnowsNothingOfTheControllerThen)
{
    watch({"R_W:1000..1999"});
    show();
    open();
    EXPECT_TRUE(waitUntil([this]() { return cell("1/R_W:1999", RecipeModel::controller) != "?"; }));
    click("upload");
    desk.close();
    ended();
    EXPECT_THAT(result(), AnyOf(HasSubstr("the line was closed"), HasSubstr("were read")));
    EXPECT_TRUE(waitUntil([this]() { return !desk.hasLine(); }));
    EXPECT_TRUE(waitUntil([this]() { return cell("1/R_W:1999", RecipeModel::controller) == "?"; }));
    EXPECT_THAT(column(RecipeModel::controller), Each("?"));
    EXPECT_THAT(column(RecipeModel::age), Each("? not known"));
    EXPECT_FALSE(button("upload")->isEnabled());
}

TEST_F(TheRecipesPage, HoldsNoValueOfOneControllerForTheNextOnes)
{
    watchTags();
    writeFile("recipe.json", R"({"R_W:300": 5})");
    options.set.emplace_back("R_W:300=9");
    show();
    ASSERT_TRUE(load("recipe.json"));
    open();
    click("read");
    ended();
    EXPECT_EQ(cell("1/R_W:300", RecipeModel::controller), "\u2260 9");
    EXPECT_THAT(cell("1/R_W:300", RecipeModel::age), StartsWith("\u25f7 "));
    LineSetup nowhere;
    nowhere.port = "/dev/there-is-none";
    desk.open(nowhere);
    EXPECT_THAT(column(RecipeModel::controller), Each("?"));
    EXPECT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::refused; }));
    EXPECT_THAT(column(RecipeModel::controller), Each("?"));
    EXPECT_EQ(cell("1/R_W:300", RecipeModel::buffer), "5");
}

TEST_F(TheRecipesPage, SendsNothingThatWasMeantForAnotherLine)
{
    watchTags();
    show();
    writeFile("recipe.json", R"({"speed": 20})");
    ASSERT_TRUE(load("recipe.json"));
    open();
    unlock();
    const auto first = std::move(controller);
    options.dumpFile = path("second");
    // While it is asked, another line is opened and unlocked.
    QTimer::singleShot(0, page.get(), [this]() {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        open();
        unlock();
        QTest::mouseClick(box->button(QMessageBox::Yes), Qt::LeftButton);
    });
    click("download");
    EXPECT_FALSE(desk.recipeIsUnderWay());
    EXPECT_THAT(
        complaint([this]() { desk.moveRecipe(desk.lineNumber() - 1, RecipeKind::download, {}); }),
        HasSubstr("another line was opened meanwhile"));
    EXPECT_EQ(held("R_W", 100), 1500);
}

TEST_F(TheRecipesPage, TakesNothingIntoTheBufferThatWouldNotReadBackTheSame)
{
    watchTags();
    show();
    writeFile("recipe.json", R"({"speed": 20, "code": 1})");
    ASSERT_TRUE(load("recipe.json"));
    edit("speed", "500.5");
    EXPECT_THAT(told, HasSubstr("speed: value '500.5': above the maximum, 500"));
    EXPECT_EQ(cell("speed", RecipeModel::buffer), "20 m/min");
    edit("speed", "20.03");
    EXPECT_THAT(told, StartsWith("speed: "));
    EXPECT_EQ(cell("speed", RecipeModel::buffer), "20 m/min");
    edit("code", "12x");
    EXPECT_EQ(cell("code", RecipeModel::buffer), "1");
    edit("code", "9999");
    EXPECT_EQ(told, "");
    EXPECT_EQ(cell("code", RecipeModel::buffer), "9999");
    table->selectRow(rowOf("speed"));
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(cell("speed", RecipeModel::buffer), "");
    ASSERT_TRUE(save("saved.json"));
    EXPECT_EQ(readWithTags("saved.json").count("speed"), 0U);
    EXPECT_THAT(cell("speed", RecipeModel::file), "");
}

TEST_F(TheRecipesPage, RefusesABrokenFileWithItsPlaceAndKeepsWhatItHad)
{
    watchTags();
    show();
    writeFile("good.json", R"({"speed": 20})");
    ASSERT_TRUE(load("good.json"));
    for (const auto& [text, mistake] :
         {std::pair{R"({"speed": 30, "nobody": 1})", "nobody: no value is called so here"},
          {R"({"speed": 30, "preset": [1, 2]})", "preset: "},
          {R"({"speed": 30)", "broken.json:1:"}}) {
        writeFile("broken.json", text);
        EXPECT_FALSE(load("broken.json"));
        EXPECT_THAT(told, HasSubstr(mistake));
        EXPECT_EQ(cell("speed", RecipeModel::buffer), "20 m/min");
    }
    writeFile("project.json", R"({"version": 1})");
    EXPECT_FALSE(save("project.json"));
    EXPECT_THAT(told, HasSubstr("is a project"));
}

TEST_F(TheRecipesPage, LoadsWhatLiesOutsideItsLimitsSaysSoAndNeverDownloadsIt)
{
    watchTags();
    show();
    writeFile("recipe.json", R"({"speed": 3000, "R_W:110": 4})");
    ASSERT_TRUE(load("recipe.json")) << told;
    EXPECT_EQ(cell("speed", RecipeModel::buffer), "3000 m/min");
    EXPECT_THAT(result(), StartsWith("1 value(s) of the file lie outside their limits"));
    open();
    unlock();
    click("download");
    EXPECT_FALSE(desk.recipeIsUnderWay());
    EXPECT_EQ(told, "speed: value '3000': above the maximum, 500");
    EXPECT_EQ(held("R_W", 110), 1);
}

TEST_F(TheRecipesPage, KeepsTheRecipeWhileSomethingElseIsWatchedToo)
{
    watchTags();
    show();
    writeFile("recipe.json", R"({"speed": 20, "R_W:300": 5})");
    ASSERT_TRUE(load("recipe.json"));
    std::vector<Item> items = desk.tags().items;
    items.insert(items.begin(), Items(library, ItemSource()).find("R_W:7", Access::read));
    desk.setItems(items);
    EXPECT_EQ(cell("speed", RecipeModel::buffer), "20 m/min");
    EXPECT_EQ(cell("1/R_W:7", RecipeModel::buffer), "");
    EXPECT_EQ(cell("1/R_W:300", RecipeModel::buffer), "5");
    watch({"R_W:7"});
    EXPECT_THAT(column(RecipeModel::name), ElementsAre("1/R_W:7", "1/R_W:300"));
}

TEST_F(TheRecipesPage, AsksBeforeItReplacesABufferThatIsNotSaved)
{
    watch({"R_W:100"});
    show();
    open();
    edit("1/R_W:100", "6");
    answer(QMessageBox::No, "has not been saved");
    click("upload");
    EXPECT_FALSE(desk.recipeIsUnderWay());
    EXPECT_EQ(cell("1/R_W:100", RecipeModel::buffer), "6");
    answer(QMessageBox::Yes, "has not been saved");
    click("upload");
    ended();
    EXPECT_EQ(cell("1/R_W:100", RecipeModel::buffer), "1500");
}

TEST_F(TheRecipesPage, RemembersItsFileInTheProject)
{
    watchTags();
    show();
    writeFile("recipe.json", R"({"speed": 20})");
    EXPECT_THAT(complaint([this]() {
                    page->prepared(OrderedJson{{"file", 3}});
                }),
                StartsWith("file: "));
    EXPECT_EQ(page->settings().dump(), "{}");
    page->prepared(OrderedJson{{"file", path("recipe.json")}})();
    EXPECT_TRUE(waitUntil([this]() { return !cell("speed", RecipeModel::buffer).empty(); }));
    EXPECT_EQ(page->settings().at("file"), path("recipe.json"));
    page->prepared(OrderedJson::object())();
    EXPECT_EQ(cell("speed", RecipeModel::buffer), "");
}

} // namespace

} // namespace dov417
