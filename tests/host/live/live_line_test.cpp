#include "live/live_line.h"

#include <functional>

#include "line_fields.h"
#include "loaded_library.h"

namespace dov417 {

namespace {

struct SetupCase {
    const char* name;
    std::function<void(LineSetup&)> choose;
    LineFields changed;
};

class ALiveLine : public LoadedLibrary, public ::testing::WithParamInterface<SetupCase> {
protected:
    ALiveLine()
    {
        setup.port = "/dev/ttyS99"; // it is not opened
    }
    LineSettings settings() const
    {
        return LiveLine(library, setup, {}).settings();
    }

    LineSetup setup;
};

TEST_P(ALiveLine, HasEachSettingWhereItIsMeant)
{
    GetParam().choose(setup);
    EXPECT_EQ(fieldsOf(settings()), defaultsBut(GetParam().changed));
}

const SetupCase setupCases[] = {
    {"Nothing", [](LineSetup&) {}, {}},
    {"AFixedTimeout",
     [](LineSetup& setup) { setup.timeoutMs = 300; },
     {{"timeout", 300}, {"isTimeoutFixed", 1}}},
    {"AFixedTimeoutBeyondTheHorizon",
     [](LineSetup& setup) { setup.timeoutMs = 40000; },
     {{"timeout", 40000}, {"isTimeoutFixed", 1}, {"horizon", 40000}}},
    {"ALeastTimeout", [](LineSetup& setup) { setup.timeoutMinMs = 20; }, {{"minTimeout", 20}}},
    {"ALeastTimeoutThatIsLonger",
     [](LineSetup& setup) { setup.timeoutMinMs = 700; },
     {{"timeout", 700}, {"minTimeout", 700}}},
    {"AGreatestTimeout",
     [](LineSetup& setup) { setup.timeoutMaxMs = 4000; },
     {{"maxTimeout", 4000}}},
    {"AGreatestTimeoutThatIsShorter",
     [](LineSetup& setup) { setup.timeoutMaxMs = 300; },
     {{"timeout", 300}, {"maxTimeout", 300}}},
    {"AGreatestTimeoutBeyondTheHorizon",
     [](LineSetup& setup) { setup.timeoutMaxMs = 60000; },
     {{"maxTimeout", 30000}}},
    {"AReplyGap", [](LineSetup& setup) { setup.replyGapMs = 5; }, {{"replyGap", 5}}},
    {"ANetwork", [](LineSetup& setup) { setup.port = "tcp://here:1"; }, {{"replyGap", 500}}},
    {"AReplyGapOverANetwork",
     [](LineSetup& setup) {
         setup.port = "tcp://here:1";
         setup.replyGapMs = 30;
     },
     {{"replyGap", 30}}},
    {"AHorizon",
     [](LineSetup& setup) { setup.horizonSeconds = 2.5; },
     {{"horizon", 2500}, {"maxTimeout", 2500}}},
    {"AHorizonWithinTheTimeout",
     [](LineSetup& setup) { setup.horizonSeconds = 0.2; },
     {{"horizon", 500}, {"maxTimeout", 500}}},
    {"AProbe", [](LineSetup& setup) { setup.maxProbeMs = 4000; }, {{"maxProbePause", 4000}}},
    {"NoFunction8", [](LineSetup& setup) { setup.mayMark = false; }, {{"mayMark", 0}}},
    {"AMaximumOfRegisters",
     [](LineSetup& setup) { setup.maxRegisters = 60; },
     {{"maxRegisters", 60}}},
    {"ATurnaround", [](LineSetup& setup) { setup.turnaroundMs = 7; }, {{"turnaround", 7}}},
    {"ADirection",
     [](LineSetup& setup) {
         setup.direction.isWanted = true;
         setup.direction.delayBeforeMs = 10;
     },
     {{"direction", 1}, {"timeout", 510}, {"maxTimeout", 15010}, {"turnaround", 110}}},
};

INSTANTIATE_TEST_SUITE_P(Of, ALiveLine, ::testing::ValuesIn(setupCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(ALiveLine, KnowsItsStationsItsPortAndItsSpeed)
{
    setup.stationMaxRegisters = {{3, 32}};
    setup.stationNames = {{3, "oven"}};
    setup.line = "9600,8,ODD,1";
    const LineSettings line = settings();
    EXPECT_EQ(line.stationMaxRegisters, (std::map<int, int>{{3, 32}}));
    EXPECT_EQ(nameOf(3, line.stationNames), "oven");
    EXPECT_EQ(line.device, QStringLiteral("/dev/ttyS99"));
    EXPECT_EQ(toText(line.wire), "9600,8,ODD,1");
}

TEST_F(ALiveLine, IsRefusedWhereItsTimesContradict)
{
    setup.timeoutMinMs = 500;
    setup.timeoutMaxMs = 400;
    EXPECT_EQ(complaint([this]() { settings(); }), "--timeout-max is less than --timeout-min");
}

TEST_F(ALiveLine, ThatIsListenedToOnlyHasItsSilenceAndItsHorizon)
{
    setup.replyGapMs = 5;
    setup.horizonSeconds = 2.5;
    setup.stationNames = {{3, "oven"}};
    const LineSettings line = listeningSettings(library, setup);
    EXPECT_EQ(fieldsOf(line),
              defaultsBut({{"replyGap", 5}, {"horizon", 2500}, {"maxTimeout", 2500}}));
    EXPECT_EQ(nameOf(3, line.stationNames), "oven");
    EXPECT_EQ(line.device.toStdString(), setup.port);
}

} // namespace

} // namespace dov417
