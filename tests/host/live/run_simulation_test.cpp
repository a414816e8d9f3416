#include "live/run_simulation.h"

#include <QTimer>
#include <csignal>
#include <gmock/gmock.h>
#include <optional>

#include "line/failure.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

using ::testing::HasSubstr;

class ASimulationThatRuns : public ::testing::Test {
protected:
    ~ASimulationThatRuns() override
    {
        std::signal(SIGTERM, SIG_DFL);
    }
    // What it fails with, where this happens once it serves.
    std::optional<std::string> run(const std::function<void()>& then)
    {
        std::signal(SIGTERM, SIG_DFL); // whoever runs the tests may ignore it
        try {
            runSimulation(options, {[&then](const simulator::Simulation&) {
                                        QTimer::singleShot(0, [&then]() { then(); });
                                    },
                                    [this](const std::string& told) { report = told; }});
        } catch (const Failure& failure) {
            return failure.what();
        }
        return std::nullopt;
    }

    PtySlave slave;
    simulator::SimulationOptions options;
    std::string report;
};

TEST_F(ASimulationThatRuns, EndsWithASignalAndWithoutAComplaint)
{
    EXPECT_EQ(run([]() { raise(SIGTERM); }), std::nullopt);
    EXPECT_THAT(report, HasSubstr("requests 0, of these answered 0"));
}

TEST_F(ASimulationThatRuns, EndsWithItsPortAndSaysSo)
{
    options.device = slave.port().toStdString();
    EXPECT_EQ(run([this]() { slave.unplug(); }), "port " + options.device + " is gone");
    EXPECT_THAT(report, HasSubstr("requests 0, of these answered 0")) << "told all the same";
}

} // namespace

} // namespace dov417
