#include "live/simulation_record.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

TEST(SimulationRecord, CarriesEveryOption)
{
    simulator::SimulationOptions options;
    options.stations = {2, 7};
    options.device = "/dev/ttyS0";
    options.link = "/tmp/a \"quoted\" link";
    options.line = {9600, 7, Parity::odd, 2};
    options.ownSpeedOnly = true;
    options.baudLimit = true;
    options.responseTimeMs = 5;
    options.strict = true;
    options.faults = {"flip=10%", "silence=every:7"};
    options.seed = 4294967295U;
    options.frozen = true;
    options.followInputs = false;
    options.hold = {"1/T:100"};
    options.holdWritten = false;
    options.set = {"R_W:1=2", "R_W:3=4"};
    options.loadFile = "in.json";
    options.dumpFile = "out.json";
    options.logFile = "-";
    const std::string record = toRecord(options);
    EXPECT_EQ(record.find('\n'), std::string::npos);

    // An option that comes to them later has to come into the record, too.
    const auto& [stations, device, link, line, ownSpeedOnly, baudLimit, responseTimeMs, strict,
                 faults, seed, frozen, followInputs, hold, holdWritten, set, loadFile, dumpFile,
                 logFile] = parseSimulationRecord(record);
    EXPECT_EQ(stations, options.stations);
    EXPECT_EQ(device, options.device);
    EXPECT_EQ(link, options.link);
    EXPECT_EQ(toText(line), "9600,7,ODD,2");
    EXPECT_EQ(ownSpeedOnly, true);
    EXPECT_EQ(baudLimit, true);
    EXPECT_EQ(responseTimeMs, 5);
    EXPECT_EQ(strict, true);
    EXPECT_EQ(faults, options.faults);
    EXPECT_EQ(seed, 4294967295U);
    EXPECT_EQ(frozen, true);
    EXPECT_EQ(followInputs, false);
    EXPECT_EQ(hold, options.hold);
    EXPECT_EQ(holdWritten, false);
    EXPECT_EQ(set, options.set);
    EXPECT_EQ(loadFile, "in.json");
    EXPECT_EQ(dumpFile, "out.json");
    EXPECT_EQ(logFile, "-");
}

TEST(SimulationRecord, IsRefusedWhereItIsNone)
{
    for (const char* text : {"", "[]", "{}", "{\"stations\": 1"})
        EXPECT_THAT(complaint([&] { parseSimulationRecord(text); }),
                    ::testing::HasSubstr("no record of a controller's options"))
            << text;
}

} // namespace

} // namespace dov417
