// What is chosen on the pages of the plan and of the time on the wire is taken back with Ctrl+Z as
// any edit of the project is.
#include <QPushButton>
#include <QSpinBox>

#include "panel/frames/wire_page.h"
#include "panel/plan/plan_page.h"
#include "project_world.h"

namespace dov417 {

namespace {

class AStepOfAPage : public ProjectWorld {
protected:
    template <typename Page>
    Page& onPage(int place)
    {
        window.showPage(place);
        auto* const page = window.findChild<Page*>();
        EXPECT_TRUE(page->isVisible());
        return *page;
    }
    void press(Qt::KeyboardModifiers modifiers)
    {
        QTest::keyClick(&window, Qt::Key_Z, modifiers);
    }
    void takeBack()
    {
        press(Qt::ControlModifier);
    }
    void doAgain()
    {
        press(Qt::ControlModifier | Qt::ShiftModifier);
    }
    static void type(QSpinBox& field, const char* number)
    {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, number);
        QTest::keyClick(&field, Qt::Key_Return);
    }
    OrderedJson saved()
    {
        EXPECT_TRUE(window.actions().saveIn(path("machine.json")));
        return jsonOf(path("machine.json"));
    }
    std::string savedOf(const char* page)
    {
        return saved().value("panel", OrderedJson::object()).value(page, OrderedJson()).dump();
    }
};

TEST_F(AStepOfAPage, IsTheMergeGap)
{
    add("R_W:1");
    add("R_W:19");
    auto& page = onPage<PlanPage>(6);
    auto* const use = page.findChild<QPushButton*>("useBest");
    ASSERT_TRUE(waitUntil([use]() { return use->isEnabled(); }));
    const int before = desk.lineSetup().mergeGap();
    QTest::mouseClick(use, Qt::LeftButton);
    const int best = desk.lineSetup().mergeGap();
    ASSERT_NE(best, before);
    EXPECT_EQ(saved().at("line").at("gap"), best);
    takeBack();
    EXPECT_EQ(desk.lineSetup().mergeGap(), before);
    EXPECT_EQ(saved().value("line", OrderedJson::object()).count("gap"), 0U);
    doAgain();
    EXPECT_EQ(saved().at("line").at("gap"), best);
}

TEST_F(AStepOfAPage, IsTheResponseTimeOfThePlan)
{
    auto& time = *onPage<PlanPage>(6).findChild<QSpinBox*>("responseTime");
    type(time, "50");
    EXPECT_EQ(savedOf("plan"), R"({"responseTime":50})");
    takeBack();
    EXPECT_EQ(savedOf("plan"), "{}");
    doAgain();
    EXPECT_EQ(time.value(), 50);
}

TEST_F(AStepOfAPage, IsHowManyCyclesAreSeen)
{
    auto& cycles = *onPage<WirePage>(5).findChild<QSpinBox*>("cycles");
    const int shown = cycles.value();
    type(cycles, "7");
    EXPECT_EQ(savedOf("timeOnTheWire"), R"({"cycles":7})");
    takeBack();
    EXPECT_EQ(cycles.value(), shown);
    EXPECT_EQ(savedOf("timeOnTheWire"), "{}");
}

} // namespace

} // namespace dov417
