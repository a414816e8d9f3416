#include "live/controller_orders.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AControllerThatIsToldOrders : public ::testing::Test {
protected:
    AControllerThatIsToldOrders()
    {
        simulation.start();
    }
    ControllerReport told(const std::string& line)
    {
        return parseControllerReport(obey(simulation, line));
    }

    simulator::Simulation simulation{simulator::SimulationOptions()};
};

TEST_F(AControllerThatIsToldOrders, WorksUnderThemAndReportsWhatItDoes)
{
    simulator::Conditions conditions;
    conditions.faults = {"flip=10%", "silence=every:7"};
    conditions.responseTimeMs = 12;
    conditions.isOn = false;
    const ControllerReport report = told(toRecord(conditions));
    EXPECT_EQ(report.refused, "");
    EXPECT_TRUE(report.conditions == conditions);
    EXPECT_THAT(simulation.conditions().faults, ElementsAre("flip=10%", "silence=every:7"));
    EXPECT_EQ(simulation.conditions().responseTimeMs, 12);
    EXPECT_FALSE(simulation.conditions().isOn);
    EXPECT_TRUE(simulation.conditions().isPlugged);
}

TEST_F(AControllerThatIsToldOrders, ReportsWhatItsRepliesHaveSuffered)
{
    simulation.faults().setRules({simulator::parseFaultRule("silence=every:2")});
    for (int i = 0; i < 4; ++i)
        simulation.faults().apply("request", "reply");
    const ControllerReport report = told(toRecord(simulator::Conditions()));
    EXPECT_EQ(report.counts.replies, 4U);
    EXPECT_EQ(report.counts.faulty, 2U);
    EXPECT_THAT(report.counts.kinds, ElementsAre(testing::Pair("silence", 2U)));
}

TEST_F(AControllerThatIsToldOrders, RefusesWhatIsNoOrderAndChangesNothing)
{
    for (const char* const line :
         {"", "hello", "[]", "{}", R"({"faults": [], "responseTimeMs": 0, "isOn": false})",
          R"({"faults": ["flip=1%"], "responseTimeMs": "soon", "isOn": false, "isPlugged": true})",
          "{\"faults\": \"\xFF\xFE"}) {
        const ControllerReport report = told(line);
        EXPECT_THAT(report.refused, HasSubstr("no conditions of a controller")) << line;
        EXPECT_THAT(report.conditions.faults, IsEmpty());
        EXPECT_TRUE(simulation.conditions().isOn) << line;
    }
    simulator::Conditions unknown;
    unknown.faults = {"flop=1%"};
    EXPECT_THAT(told(toRecord(unknown)).refused, HasSubstr("no such kind of fault"));
    EXPECT_THAT(simulation.conditions().faults, IsEmpty());
}

TEST(AControllersReport, IsNothingElse)
{
    EXPECT_THAT(complaint([] { parseControllerReport("port /dev/pts/1"); }),
                HasSubstr("no report of a controller"));
}

} // namespace

} // namespace dov417
