#include "tool/watch_screen.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "line/failure.h"

namespace dov417 {

namespace {

using std::chrono::seconds;

constexpr std::size_t valueCount300 = 300;
const Clock::time_point noon(std::chrono::hours(12));

std::vector<Key> typed(const std::string& text)
{
    return KeyDecoder().take(text);
}

Key key(KeyKind kind)
{
    return {kind, {}};
}

// Values 0, 10, 20 ... of the tags "pump.0", "pump.1" ... "valve.150" ...
class AWatchScreen : public ::testing::Test {
protected:
    AWatchScreen() : AWatchScreen(true) {}
    explicit AWatchScreen(bool takesKeys)
    {
        for (std::size_t i = 0; i < valueCount300; ++i) {
            const std::string number = std::to_string(i);
            labels.push_back({(i < 150 ? "pump." : "valve.") + number, "1/R_W:" + number, {}});
            View view;
            view.address = {1, "R_W", Width::word, static_cast<int>(i), 1};
            view.hasValue = true;
            view.lastGood = noon;
            view.value = {static_cast<unsigned char>(i % 25 * 10), 0};
            view.previous = {0, 0};
            views.push_back(view);
        }
        screen = std::make_unique<WatchScreen>(
            labels, takesKeys,
            WatchWishes{[this]() { ++ends; },
                        [this](std::size_t view) {
                            if (!whyNot.empty())
                                throw UsageFailure(whyNot);
                            asked.push_back(view);
                            return std::string("0 to 3000");
                        },
                        [this](std::size_t view, const std::string& value) {
                            if (value == "4000")
                                throw UsageFailure("above the maximum");
                            written.emplace_back(view, value);
                        }});
        paint();
    }

    void paint()
    {
        WatchContent content{views, noon + age, "12:00:05", "link good; 5 sent", {}, {}};
        content.allCounters = counters;
        content.messages = messages;
        lines = screen->paint(size, content);
    }
    void press(const std::vector<Key>& keys)
    {
        take(keys, true);
    }
    void pressAtOnce(const std::string& text)
    {
        take(typed(text), false);
    }
    void take(const std::vector<Key>& keys, bool afterPause)
    {
        screen->take(keys, views, "12:00:05", afterPause);
        paint();
    }
    void press(const std::string& text)
    {
        press(typed(text));
    }
    void press(KeyKind kind)
    {
        press(std::vector<Key>{key(kind)});
    }

    // The lines that hold a text, one below the other.
    std::string with(const std::string& text) const
    {
        std::string found;
        for (const ScreenLine& each : lines)
            if (each.text.find(text) != std::string::npos)
                found += each.text + "\n";
        return found;
    }
    // Of a row, without the blanks behind it.
    std::string textOf(std::size_t row) const
    {
        const std::string& text = lines.at(row).text;
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }
    std::string underTheCursor() const
    {
        std::string found;
        for (const ScreenLine& each : lines)
            if (each.isReversed && each.text.find("1/R_W") != std::string::npos)
                found += each.text.substr(0, each.text.find(' '));
        return found;
    }
    std::size_t rowsOfValues() const
    {
        return static_cast<std::size_t>(
            std::count_if(lines.begin(), lines.end(), [](const ScreenLine& each) {
                return each.text.find("1/R_W:") != std::string::npos;
            }));
    }

    std::vector<ViewLabel> labels;
    std::vector<View> views;
    ScreenSize size{24, 80};
    seconds age{1};
    std::vector<std::string> counters;
    std::vector<std::string> messages;
    std::string whyNot;
    std::unique_ptr<WatchScreen> screen;
    std::vector<ScreenLine> lines;

    int ends = 0;
    std::vector<std::size_t> asked;
    std::vector<std::pair<std::size_t, std::string>> written;
};

using Writes = std::vector<std::pair<std::size_t, std::string>>;

// ---- the screen -------------------------------------------------------------------------------

TEST_F(AWatchScreen, HasItsRowsForTheValues)
{
    ASSERT_EQ(lines.size(), 24U);
    EXPECT_EQ(rowsOfValues(), 20U);
    EXPECT_EQ(lines.at(0).text.substr(0, 28), "300 values | lines 1 to 20  ");
    EXPECT_TRUE(lines.at(0).isReversed);
    EXPECT_EQ(lines.at(1).text.substr(0, 26), "name       address    valu");
    EXPECT_EQ(textOf(2), "pump.0     1/R_W:0        0                     1.0 s        0");
    EXPECT_EQ(lines.at(22).text.substr(0, 20), "link good; 5 sent   ");
    EXPECT_EQ(lines.at(23).text.substr(0, 14), "arrows move   ");
}

TEST_F(AWatchScreen, FillsEverySizeAndNoMore)
{
    messages = {"given up: a very long message about a station that does not answer at all"};
    for (const std::string keys : {"", "w12345", "\033", "s", "?", "?/x"}) {
        screen->take(typed(keys), views, "12:00:05", true);
        for (const std::size_t rows : {1U, 2U, 3U, 4U, 5U, 6U, 8U, 24U, 43U})
            for (const std::size_t columns : {1U, 19U, 20U, 21U, 40U, 80U, 132U}) {
                size = {rows, columns};
                paint();
                ASSERT_EQ(lines.size(), rows) << columns << " " << keys;
                for (const ScreenLine& each : lines)
                    ASSERT_LE(lengthOf(each.text), columns) << rows << " " << each.text;
            }
    }
}

TEST_F(AWatchScreen, LeavesColumnsOutThatDoNotFitButNeverPartOfAValue)
{
    size = {24, 50};
    paint();
    EXPECT_EQ(textOf(1), "name       address    value  quality    age");
    size = {24, 36};
    paint();
    EXPECT_EQ(textOf(2), "pump.0         0           1.0 s");
    size = {24, 30};
    paint();
    press(KeyKind::end);
    EXPECT_EQ(lines.at(21).text.substr(0, 9), "va...299 ")
        << "names that begin alike differ at their end";
    EXPECT_NE(lines.at(21).text.find(" 240 "), std::string::npos);
}

TEST_F(AWatchScreen, MarksALineThatIsCut)
{
    size = {24, 20};
    paint();
    for (const ScreenLine& each : lines)
        EXPECT_TRUE(lengthOf(each.text) < 20 || each.text.back() == '>' || each.isReversed)
            << each.text;
    EXPECT_EQ(lines.at(22).text, "link good; 5 sent   ");
    EXPECT_EQ(lines.at(23).text, "arrows move   / fil>");
}

TEST_F(AWatchScreen, ShowsNoControlCharacters)
{
    messages = {"evil \033[2J"};
    paint();
    EXPECT_NE(with("evil ?[2J"), "");
}

TEST_F(AWatchScreen, CountsWhatIsNotGoodAlsoWhereItIsNotSeen)
{
    views.at(299).isOld = true;
    views.at(298).hasValue = false;
    paint();
    EXPECT_NE(with("300 values, 2 not good"), "");
    press("/pump");
    EXPECT_NE(with("filter \"pump\": 150 of 300 values, of all 2 not good"), "");
}

TEST_F(AWatchScreen, GivesMessagesNoMoreThanASixthOfTheRows)
{
    messages.assign(10, "given up");
    paint();
    EXPECT_EQ(rowsOfValues(), 16U);
    EXPECT_NE(with("... and 7 more"), "");
}

class AWatchScreenWithoutKeys : public AWatchScreen {
protected:
    AWatchScreenWithoutKeys() : AWatchScreen(false) {}
};

TEST_F(AWatchScreenWithoutKeys, HasNoCursorAndNamesNone)
{
    EXPECT_EQ(underTheCursor(), "");
    EXPECT_EQ(rowsOfValues(), 21U);
    EXPECT_EQ(with("arrows"), "");
}

// ---- moving -----------------------------------------------------------------------------------

TEST_F(AWatchScreen, MovesTheCursorAndWhatIsSeen)
{
    EXPECT_EQ(underTheCursor(), "pump.0");
    press(KeyKind::up);
    EXPECT_EQ(underTheCursor(), "pump.0");
    press(KeyKind::down);
    EXPECT_EQ(underTheCursor(), "pump.1");
    press(KeyKind::pageDown);
    EXPECT_EQ(underTheCursor(), "pump.21");
    EXPECT_NE(with("lines 3 to 22"), "");
    press(KeyKind::end);
    EXPECT_EQ(underTheCursor(), "valve.299");
    EXPECT_NE(with("lines 281 to 300"), "");
    press(KeyKind::pageDown);
    EXPECT_EQ(underTheCursor(), "valve.299");
    press(KeyKind::pageUp);
    EXPECT_EQ(underTheCursor(), "valve.279");
    press(KeyKind::home);
    EXPECT_EQ(underTheCursor(), "pump.0");
    EXPECT_NE(with("lines 1 to 20"), "");
}

TEST_F(AWatchScreen, KeepsTheCursorInSightWhenItsSizeChanges)
{
    for (int i = 0; i < 19; ++i)
        press(KeyKind::down);
    size = {10, 80};
    paint();
    EXPECT_EQ(underTheCursor(), "pump.19");
    size = {43, 132};
    paint();
    EXPECT_EQ(underTheCursor(), "pump.19");
    EXPECT_EQ(rowsOfValues(), 39U);
    press(KeyKind::end);
    size = {100, 132};
    paint();
    EXPECT_EQ(rowsOfValues(), 96U) << "no empty rows below the last value";
}

// ---- filter -----------------------------------------------------------------------------------

TEST_F(AWatchScreen, FiltersByNameOrAddressAsOneTypes)
{
    press("/VALVE.29");
    EXPECT_EQ(rowsOfValues(), 11U - 1U);
    press("9");
    EXPECT_EQ(rowsOfValues(), 1U);
    press(KeyKind::backspace);
    EXPECT_EQ(rowsOfValues(), 10U);
    press(KeyKind::clear);
    EXPECT_EQ(rowsOfValues(), 20U);
    press("r_w:17");
    EXPECT_EQ(rowsOfValues(), 11U);
    press(KeyKind::enter);
    EXPECT_NE(with("filter \"r_w:17\": 11 of 300 values"), "");
    press(KeyKind::escape);
    EXPECT_EQ(rowsOfValues(), 20U);
    EXPECT_EQ(with("filter \""), "");
}

TEST_F(AWatchScreen, KeepsTheLineUnderTheCursorWhereTheFilterLetsItThrough)
{
    press(KeyKind::end);
    press("/29");
    EXPECT_EQ(underTheCursor(), "valve.299");
    press(KeyKind::escape);
    EXPECT_EQ(underTheCursor(), "valve.299");
    press("/pump");
    EXPECT_EQ(underTheCursor(), "pump.149");
}

TEST_F(AWatchScreen, WritesNothingWhereTheFilterLeavesNothing)
{
    press("/none");
    press(KeyKind::enter);
    EXPECT_EQ(rowsOfValues(), 0U);
    press("w");
    EXPECT_EQ(asked.size(), 0U);
    EXPECT_NE(with("no line is under the cursor"), "");
}

// ---- standing still ---------------------------------------------------------------------------

TEST_F(AWatchScreen, StandsStillAndSaysSoAndSinceWhen)
{
    press(" ");
    views.at(0).value.at(0) = 77;
    views.at(0).changes = 5;
    age = seconds(60);
    paint();
    EXPECT_EQ(lines.at(0).text.substr(0, 48), "STANDS STILL since 12:00:05, polling goes on | 3");
    EXPECT_EQ(textOf(2), "pump.0     1/R_W:0        0    still            60.0 s        0")
        << "as it was, but as old as it is";
    press(" ");
    EXPECT_EQ(with("STANDS STILL"), "");
    EXPECT_EQ(textOf(2), "pump.0     1/R_W:0       77                  0  60.0 s        5");
}

TEST_F(AWatchScreen, ThatStandsStillMarksWhatHasFailedSince)
{
    views.at(2).isOld = true;
    views.at(3).hasValue = false;
    press(" ");
    views.at(1).isOld = true;
    paint();
    EXPECT_NE(with("pump.0 ").find(" still "), std::string::npos);
    EXPECT_NE(with("pump.1 ").find(" old "), std::string::npos);
    EXPECT_NE(with("pump.2 ").find(" old "), std::string::npos);
    EXPECT_NE(with("pump.3 ").find(" never read "), std::string::npos);
    views.at(1).isOld = false;
    paint();
    EXPECT_NE(with("pump.1 ").find(" old "), std::string::npos)
        << "what stands here was not read again";
}

TEST_F(AWatchScreen, ThatStandsStillMarksWhatWasInDoubtForAMoment)
{
    press(" ");
    View inDoubt = views.at(4);
    inDoubt.hasValue = false;
    screen->changed(inDoubt, 4);
    paint();
    EXPECT_NE(with("pump.4 ").find(" old "), std::string::npos);
}

// ---- writing ----------------------------------------------------------------------------------

TEST_F(AWatchScreen, AsksForAValueWithItsRangeAndSendsItOnEnter)
{
    press(KeyKind::down);
    press("w");
    EXPECT_EQ(lines.at(22).text, "write pump.1, 1/R_W:1: now 10; 0 to 3000");
    EXPECT_EQ(lines.at(23).text, "new value (Enter sends it, Esc sends nothing): _");
    press("15");
    press(KeyKind::backspace);
    press("6");
    EXPECT_EQ(lines.at(23).text, "new value (Enter sends it, Esc sends nothing): 16_");
    EXPECT_EQ(written, Writes());
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{1, "16"}}));
    screen->showOutcome("written");
    paint();
    EXPECT_EQ(lines.at(22).text, "written");
}

TEST_F(AWatchScreen, SendsNothingThatNobodyTyped)
{
    press("w");
    press(KeyKind::enter);
    EXPECT_EQ(written, Writes()) << "an empty text would be all zeros";
    EXPECT_NE(with("nothing is typed, and nothing was sent; \"\" is an empty text"), "");
    press("7");
    press(KeyKind::clear);
    press(KeyKind::enter);
    EXPECT_EQ(written, Writes());
    press("\"\"");
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{0, "\"\""}}));
}

TEST_F(AWatchScreen, SendsNothingOnEsc)
{
    press("w");
    press("16");
    press(KeyKind::escape);
    press(KeyKind::enter);
    EXPECT_EQ(written, Writes());
    press("w");
    EXPECT_NE(with("Esc sends nothing): _"), "") << "what was typed is forgotten";
}

TEST_F(AWatchScreen, KeepsTheFieldOpenWhereAValueIsRefused)
{
    press("w");
    press("4000");
    press(KeyKind::enter);
    EXPECT_EQ(written, Writes());
    EXPECT_NE(with("above the maximum; nothing was sent"), "");
    press(KeyKind::clear);
    press("3000");
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{0, "3000"}}));
}

TEST_F(AWatchScreen, SaysWhyALineCannotBeWritten)
{
    whyNot = "I_bit is read-only";
    press("w");
    EXPECT_NE(with("I_bit is read-only"), "");
    press("5");
    press(KeyKind::enter);
    EXPECT_EQ(written, Writes());
}

TEST_F(AWatchScreen, SendsToTheLineThatWasUnderTheCursorWhateverComesMeanwhile)
{
    press("/pump");
    press(KeyKind::enter);
    for (int i = 0; i < 7; ++i)
        press(KeyKind::down);
    press("w");
    for (const KeyKind kind : {KeyKind::down, KeyKind::pageDown, KeyKind::end, KeyKind::home})
        press(kind);
    size = {12, 60};
    paint();
    press("/ qs?w");
    press(KeyKind::clear);
    press("5");
    EXPECT_NE(with("write pump.7, 1/R_W:7: now 70"), "");
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{7, "5"}}));
    EXPECT_EQ(underTheCursor(), "pump.7");
    EXPECT_EQ(ends, 0);
}

TEST_F(AWatchScreen, SaysHowGoodTheValueIsThatIsToBeReplaced)
{
    press(" ");
    views.at(0).isOld = true;
    press("w");
    EXPECT_NE(with("now 0 (old)"), "");
}

TEST_F(AWatchScreen, SendsNothingThatIsNotSeen)
{
    press("w");
    press("5");
    size = {2, 80};
    paint();
    press(KeyKind::enter);
    EXPECT_EQ(written, Writes());
    size = {24, 80};
    paint();
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{0, "5"}}));
    press("s");
    press("w");
    EXPECT_EQ(asked.size(), 1U);
    EXPECT_NE(with("the values are not shown"), "");
}

TEST_F(AWatchScreen, ShowsAllOfALongValue)
{
    press("w");
    press(std::string(100, '1') + std::string(60, '2'));
    std::string shown;
    for (const ScreenLine& each : lines)
        shown += each.text;
    EXPECT_NE(shown.find(std::string(100, '1') + std::string(60, '2') + "_"), std::string::npos);
}

// ---- what is pasted ---------------------------------------------------------------------------

TEST_F(AWatchScreen, IgnoresWhatIsPastedWhileNoFieldIsOpen)
{
    press("\033[200~w5\rq\033[201~");
    EXPECT_EQ(asked.size(), 0U);
    EXPECT_EQ(ends, 0);
    EXPECT_NE(with("what was pasted is ignored"), "");
}

TEST_F(AWatchScreen, TakesOneLineThatIsPastedIntoAFieldAndSendsNothing)
{
    press("w");
    press("\033[200~12\r\n\033[201~");
    EXPECT_NE(with(": 12_"), "");
    press("\033[200~3\r4\033[201~");
    EXPECT_NE(with(": 12_"), "");
    EXPECT_NE(with("not one line"), "");
    EXPECT_EQ(written, Writes());
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{0, "12"}}));
}

TEST_F(AWatchScreen, DoesNotSendWhatComesAllAtOnceFromATerminalThatMarksNoPaste)
{
    press("w5\r");
    EXPECT_EQ(written, Writes());
    EXPECT_NE(with("Enter again sends it"), "");
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{0, "5"}}));
}

TEST_F(AWatchScreen, DoesNotSendWhatIsPastedInPieces)
{
    press("w");
    pressAtOnce("5");
    pressAtOnce("\r");
    pressAtOnce("\n");
    EXPECT_EQ(written, Writes());
    EXPECT_NE(with("Enter again sends it"), "");
    EXPECT_NE(with(": 5_"), "");
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{0, "5"}}));
}

TEST_F(AWatchScreen, DoesNotSendWhatIsPastedWithItsEndIntoAFieldThatWasOpen)
{
    press("w");
    press("5\r");
    EXPECT_EQ(written, Writes());
    press("\r\r");
    EXPECT_EQ(written, Writes());
    press(KeyKind::enter);
    EXPECT_EQ(written, (Writes{{0, "5"}}));
}

// ---- other pages ------------------------------------------------------------------------------

TEST_F(AWatchScreen, ShowsTheCountersWhenAsked)
{
    for (int i = 0; i < 40; ++i)
        counters.push_back("request " + std::to_string(i) + ";");
    press("s");
    EXPECT_EQ(rowsOfValues(), 0U);
    EXPECT_NE(with("request 0;"), "");
    EXPECT_EQ(with("request 21;"), "");
    press(KeyKind::end);
    EXPECT_NE(with("request 39;"), "");
    EXPECT_NE(with("request 19;"), "");
    press(KeyKind::up);
    EXPECT_NE(with("request 18;"), "");
    press("s");
    EXPECT_EQ(rowsOfValues(), 20U);
}

TEST_F(AWatchScreen, ShowsItsKeysAndGoesBack)
{
    press("?");
    EXPECT_NE(with("Page Up"), "");
    press(KeyKind::escape);
    EXPECT_EQ(rowsOfValues(), 20U);
}

TEST_F(AWatchScreen, EndsWithQ)
{
    press("q");
    EXPECT_EQ(ends, 1);
}

} // namespace

} // namespace dov417
