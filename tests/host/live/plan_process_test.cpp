#include "live/plan_process.h"

#include <QTimer>
#include <memory>
#include <optional>

#include "line/frame_text.h"
#include "live/controller_process.h"
#include "loaded_library.h"
#include "pty_slave.h"
#include "session/session.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;
using ::testing::HasSubstr;

std::string text(const Stretch& stretch)
{
    return std::to_string(stretch.station) + "/" + stretch.regName + ":" +
           std::to_string(stretch.first) + "+" + std::to_string(stretch.count) + "\n";
}

// All that a report says.
std::string text(const PlanReport& report)
{
    std::string all = "cycle " + std::to_string(report.plan.cycle.count()) + "\n";
    for (const PlannedRequest& request : report.plan.requests) {
        all += text({request.station, request.regName, request.address, request.length}) +
               hexText(request.bytes) + ", " + std::to_string(request.replyLength) + ", " +
               std::to_string(request.time.count()) + "\n";
        for (const PlannedPart& part : request.parts)
            all += "part " + std::to_string(part.address) + "+" + std::to_string(part.length) +
                   ", " + hexText(part.bytes) + ", " + std::to_string(part.replyLength) + ", " +
                   std::to_string(part.time.count()) + "\n";
    }
    for (const Stretch& stretch : report.uncovered)
        all += "uncovered " + text(stretch);
    for (const Stretch& stretch : report.divided)
        all += "divided " + text(stretch);
    for (const GapOutcome& outcome : report.outcomes)
        all += "gap " + std::to_string(outcome.firstGap) + " to " +
               std::to_string(outcome.lastGap) + ": " + std::to_string(outcome.requests) + " " +
               std::to_string(outcome.aboveLimit) + " " + std::to_string(outcome.uncoveredWords) +
               " " + std::to_string(outcome.cycle.count()) + "\n";
    return all;
}

class APlanProcess : public LoadedLibrary {
protected:
    APlanProcess()
    {
        order.library = library.path();
        order.format = {9600, 8, Parity::none, 1};
        order.responseTime = microseconds(5000);
        order.gap = 10;
    }

    std::vector<Address> addresses(const std::vector<const char*>& texts)
    {
        std::vector<Address> all;
        for (const char* one : texts)
            all.push_back(parseAddress(library, one));
        return all;
    }

    void startPlanning()
    {
        process = std::make_unique<PlanProcess>(
            order,
            [this](const PlanReport& told) {
                report = told;
                process.reset();
            },
            [this](const std::string& reason) {
                failure = reason;
                process.reset();
            });
    }

    PlanOrder order;
    std::unique_ptr<PlanProcess> process;
    std::optional<PlanReport> report;
    std::string failure;
};

TEST_F(APlanProcess, SaysWhatAPlannerSaysWhileASessionPolls)
{
    // Unread words, 32-bit values in two requests, coils, two stations, a hole to bridge.
    order.addresses = addresses({"R_W:0..199", "R_W:50", "2/R_D:142..301", "2/R_W:257..261",
                                 "2/R_W:289..420", "M_bit:1.5", "T:3", "T:10"});
    order.maxRegisters = 60;
    order.stationMaxRegisters = {{2, 30}};
    const Planner planner(library, order.addresses, order.format, order.responseTime,
                          order.maxRegisters, order.stationMaxRegisters);
    PlanReport expected;
    expected.plan = planner.plan(order.gap);
    expected.uncovered = planner.uncovered(expected.plan);
    expected.divided = planner.divided(expected.plan);
    expected.outcomes = planner.outcomes();
    ASSERT_FALSE(expected.plan.requests.at(0).parts.empty() &&
                 expected.plan.requests.at(1).parts.empty());
    ASSERT_FALSE(expected.uncovered.empty());
    ASSERT_FALSE(expected.divided.empty());
    ASSERT_GT(expected.outcomes.size(), 1U);

    simulator::SimulationOptions options;
    options.set = {"R_W:500=417"};
    const ControllerProcess controller(options);
    LineSettings line;
    line.device = QString::fromStdString(controller.port());
    long long cycles = 0;
    Session session(library, {3, 20});
    QObject::connect(&session, &Session::cycleEnded, &session,
                     [&cycles](long long count) { cycles = count; });
    ASSERT_TRUE(session.open(line).accepted);
    session.watch({parseAddress(library, "R_W:500")});
    ASSERT_TRUE(waitUntil([&cycles]() { return cycles > 0; }));

    startPlanning();
    ASSERT_TRUE(waitUntil([this]() { return !process; }));
    EXPECT_EQ(failure, "");
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(text(*report), text(expected));

    const long long before = cycles;
    ASSERT_TRUE(waitUntil([&]() { return cycles > before; }));
    EXPECT_EQ(library.driver->readList.size(), 1) << "the session's plan is what it was";
    EXPECT_EQ(session.views().at(0).value[0] + 256 * session.views().at(0).value[1], 417);
}

TEST_F(APlanProcess, SaysWhyThereIsNoPlan)
{
    order.library = "/no/such/library.so";
    startPlanning();
    ASSERT_TRUE(waitUntil([this]() { return !process; }));
    EXPECT_FALSE(report.has_value());
    EXPECT_THAT(failure, HasSubstr("cannot load the driver library: /no/such/library.so"));
}

TEST_F(APlanProcess, PlansAnyNumberOfAddresses)
{
    for (int i = 0; i < 4000; ++i) // more than a command line holds
        order.addresses.push_back({1 + i % 200, "R_W", Width::word, i, 1});
    startPlanning();
    ASSERT_TRUE(waitUntil([this]() { return !process; }));
    EXPECT_EQ(failure, "");
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(report->plan.requests.size(), 4000U);
}

TEST_F(APlanProcess, GivesUpWhenItIsDestroyed)
{
    order.addresses = addresses({"R_W:0..199"});
    startPlanning();
    process.reset();
    bool later = false;
    QTimer::singleShot(0, [&later]() { later = true; });
    ASSERT_TRUE(waitUntil([&later]() { return later; }));
    EXPECT_FALSE(report.has_value());
    EXPECT_EQ(failure, "");
}

} // namespace

} // namespace dov417
