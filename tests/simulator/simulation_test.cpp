#include "simulator/simulation.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "support.h"

namespace dov417::simulator {
namespace {

class SimulationTest : public testing::Test {
protected:
    void start()
    {
        simulation = std::make_unique<Simulation>(options);
        ASSERT_EQ(complaint([this] { simulation->start(); }), "");
    }
    std::string refusal()
    {
        Simulation refused(options);
        std::string reason = complaint([&refused] { refused.start(); });
        EXPECT_NE(reason, "");
        return reason;
    }
    std::string inFolder(const char* name)
    {
        return folder.filePath(QLatin1String(name)).toStdString();
    }

    QTemporaryDir folder;
    SimulationOptions options;
    std::unique_ptr<Simulation> simulation;
};

TEST_F(SimulationTest, ServesWhatWasSetAndReportsIt)
{
    options.stations = {1, 2};
    options.link = inFolder("plc");
    options.faults = {"echo=every:2"};
    options.set = {"R_W:10=0x1234", "2/R_W:10=1"};
    start();
    EXPECT_EQ(simulation->portName(), options.link);
    {
        MasterEnd master(simulation->portName());
        master.send(bytesOf("01 03 05 0A 00 01 A4 C4"));
        EXPECT_EQ(hexOf(master.receive(7)), "01 03 02 12 34 B5 33");
        master.send(bytesOf("02 03 05 0A 00 01 A4 F7"));
        EXPECT_EQ(hexOf(master.receive(15)), "02 03 05 0A 00 01 A4 F7 02 03 02 00 01 3D 84");
    }
    simulation->stop();
    EXPECT_EQ(simulation->report(),
              "requests 2, of these answered 2, refused 0, broadcast 0, for other stations 0\n"
              "writes executed 0, bytes that were no frame 0 times\n"
              "bytes received 16, sent 22\n"
              "faults in 1 of 2 replies: echo 1");
}

TEST_F(SimulationTest, LivesUntilItIsFrozen)
{
    start();
    ASSERT_TRUE(waitFor([&]() { return simulation->memory().station(1)->word(Area::C, 0) >= 2; }));
    simulation->plant().freeze(true);
    EXPECT_GE(simulation->memory().station(1)->word(Area::R, 0), 2);
}

TEST_F(SimulationTest, FrozenFromTheStartHoldsEverything)
{
    options.frozen = true;
    start();
    EXPECT_TRUE(simulation->plant().isFrozen());
}

TEST_F(SimulationTest, HoldsWhatWasSetWhatWasNamedAndWhatTheLineWrote)
{
    options.stations = {1, 2};
    options.set = {"R_W:1=500"};
    options.hold = {"2/T:0..127"};
    start();
    MasterEnd master(simulation->portName());
    master.send(bytesOf("01 06 05 02 00 07 69 04")); // R 2
    master.receive(8);
    master.send(bytesOf("01 0F 00 11 00 02 01 02 A3 55")); // I 1, bits 1 and 2
    master.receive(8);
    master.send(bytesOf("00 06 05 03 00 09 B8 D1")); // R 3 of both stations
    master.send(bytesOf("01 06 04 00 00 09 48 FC")); // refused
    master.receive(5);
    StationMemory& one = *simulation->memory().station(1);
    StationMemory& two = *simulation->memory().station(2);
    const int input = one.word(Area::I, 1);
    simulation->plant().advance(1000);
    EXPECT_EQ(one.word(Area::R, 1), 500);
    EXPECT_EQ(one.word(Area::R, 2), 7);
    EXPECT_EQ(one.word(Area::R, 3), 9);
    EXPECT_EQ(two.word(Area::R, 3), 9);
    EXPECT_GE(one.word(Area::R, 4), 50);
    EXPECT_GE(two.word(Area::R, 2), 30);
    EXPECT_EQ(one.word(Area::I, 1), input);
    EXPECT_EQ(two.word(Area::T, 5), 0);
    EXPECT_GE(one.word(Area::T, 5), 10);
}

TEST_F(SimulationTest, LetsWrittenWordsLiveOnIfItIsToldTo)
{
    options.holdWritten = false;
    options.set = {"R_W:1=500"};
    start();
    simulation->plant().advance(1000);
    EXPECT_GE(simulation->memory().station(1)->word(Area::R, 1), 520);
}

TEST_F(SimulationTest, LoadsBeforeItSetsAndDumpsWhenItStops)
{
    options.frozen = true;
    options.loadFile = inFolder("in.json");
    options.dumpFile = inFolder("out.json");
    QFile in(QString::fromStdString(options.loadFile));
    ASSERT_TRUE(in.open(QIODevice::WriteOnly));
    in.write(R"({"1": {"R_W": {"100": [1, 2]}}})");
    in.close();
    options.set = {"R_W:101=9"};
    start();
    ASSERT_EQ(complaint([this] { simulation->stop(); }), "");
    QFile out(QString::fromStdString(options.dumpFile));
    ASSERT_TRUE(out.open(QIODevice::ReadOnly));
    EXPECT_EQ(out.readAll().simplified().replace(" ", "").toStdString(),
              R"({"1":{"R_W":{"100":[1,9]}}})");
    EXPECT_EQ(complaint([this] { simulation->stop(); }), ""); // once stopped, nothing happens
}

TEST_F(SimulationTest, WritesEveryFrameToItsLog)
{
    options.logFile = inFolder("log");
    start();
    {
        MasterEnd master(simulation->portName());
        master.send(bytesOf("01 03 14 A0 00 01 81 D8"));
        master.receive(5);
    }
    simulation->stop();
    QFile log(QString::fromStdString(options.logFile));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QByteArray all = log.readAll();
    EXPECT_TRUE(all.contains("<- 01 03 14 A0 00 01 81 D8  station 1 reads register 5280: "
                             "exception 2, illegal data address\n"))
        << all.toStdString();
    EXPECT_TRUE(all.contains("-> 01 83 02 C0 F1  reply: exception 2, illegal data address\n"));
    EXPECT_TRUE(all.contains("-- closed\n"));
}

TEST_F(SimulationTest, KeepsToTheProtocolsLimitsIfItIsStrict)
{
    options.strict = true;
    start();
    MasterEnd master(simulation->portName());
    master.send(bytesOf("01 03 05 00 00 80 44 A6"));
    EXPECT_EQ(hexOf(master.receive(5)), "01 83 03 01 31");
}

TEST_F(SimulationTest, TakesOtherFaultsAndAnotherResponseTimeWhileItServes)
{
    options.set = {"R_W:10=0x1234"};
    options.responseTimeMs = 3;
    start();
    EXPECT_EQ(simulation->conditions().responseTimeMs, 3);
    MasterEnd master(simulation->portName());
    master.send(bytesOf("01 03 05 0A 00 01 A4 C4"));
    EXPECT_EQ(hexOf(master.receive(7)), "01 03 02 12 34 B5 33");
    Conditions conditions;
    conditions.faults = {"echo=every:1"};
    conditions.responseTimeMs = 40;
    ASSERT_EQ(complaint([&] { simulation->setConditions(conditions); }), "");
    QElapsedTimer time;
    time.start();
    master.send(bytesOf("01 03 05 0A 00 01 A4 C4"));
    EXPECT_EQ(hexOf(master.receive(15)), "01 03 05 0A 00 01 A4 C4 01 03 02 12 34 B5 33");
    EXPECT_GE(time.elapsed(), 39); // it cannot be sooner
    EXPECT_EQ(simulation->faultCounts().replies, 2U);
    EXPECT_EQ(simulation->faultCounts().faulty, 1U);
    EXPECT_EQ(simulation->faultCounts().kinds, (std::map<std::string, std::uint64_t>{{"echo", 1}}));
}

TEST_F(SimulationTest, SwitchedOffTakesNothingInAndSaysNothingAndKeepsItsValues)
{
    options.set = {"R_W:11=5"};
    options.responseTimeMs = 30000;
    start();
    MasterEnd master(simulation->portName());
    master.send(bytesOf("01 03 05 0A 00 01 A4 C4")); // is never answered
    ASSERT_TRUE(waitFor([this] { return simulation->line().counters().requests == 1; }));
    Conditions conditions;
    conditions.isOn = false;
    simulation->setConditions(conditions);
    EXPECT_FALSE(simulation->conditions().isOn);
    master.send(bytesOf("01 06 05 0B 00 07 B9 06") + bytesOf("00 06 05 0C 00 07 09 16"));
    ASSERT_TRUE(waitFor([this] { return simulation->line().counters().bytesReceived == 24; }));
    conditions.isOn = true;
    simulation->setConditions(conditions);
    master.send(bytesOf("01 03 05 0B 00 01 F5 04"));
    EXPECT_EQ(hexOf(master.receive(7)), "01 03 02 00 05 78 47");
    EXPECT_EQ(simulation->line().counters().requests, 2U);
    EXPECT_EQ(simulation->memory().station(1)->word(Area::R, 12), 0);
}

TEST_F(SimulationTest, ComesBackUnderItsNameOnceTheCableIsPluggedInAgain)
{
    options.link = inFolder("plc");
    start();
    MasterEnd before(simulation->portName());
    Conditions conditions;
    conditions.isPlugged = false;
    ASSERT_EQ(complaint([&] { simulation->setConditions(conditions); }), "");
    EXPECT_TRUE(waitFor([&] { return before.isHungUp(); }));
    EXPECT_FALSE(QFileInfo(QString::fromStdString(options.link)).isSymLink());
    EXPECT_FALSE(simulation->conditions().isPlugged);
    conditions.isPlugged = true;
    ASSERT_EQ(complaint([&] { simulation->setConditions(conditions); }), "");
    EXPECT_EQ(simulation->portName(), options.link);
    MasterEnd master(simulation->portName());
    master.send(bytesOf("01 03 05 0A 00 01 A4 C4"));
    EXPECT_EQ(hexOf(master.receive(7)), "01 03 02 00 00 B8 44");
}

TEST_F(SimulationTest, StaysUnpluggedWhereItsNameIsTakenMeanwhile)
{
    options.link = inFolder("plc");
    start();
    Conditions conditions;
    conditions.isPlugged = false;
    simulation->setConditions(conditions);
    QFile other(QString::fromStdString(options.link));
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    conditions.isPlugged = true;
    EXPECT_NE(complaint([&] { simulation->setConditions(conditions); }), "");
    EXPECT_FALSE(simulation->conditions().isPlugged);
    other.remove();
    EXPECT_EQ(complaint([&] { simulation->setConditions(conditions); }), "");
    EXPECT_EQ(simulation->portName(), options.link);
}

TEST_F(SimulationTest, RefusesConditionsThatCannotBeAndStaysAsItWas)
{
    options.faults = {"echo=every:1"};
    start();
    const auto refused = [this](const Conditions& conditions) {
        const std::string why = complaint([&] { simulation->setConditions(conditions); });
        EXPECT_EQ(simulation->conditions().faults, options.faults);
        EXPECT_TRUE(simulation->conditions().isOn);
        EXPECT_TRUE(simulation->line().isOpen());
        return why;
    };
    Conditions conditions;
    conditions.isOn = false;
    conditions.faults = {"flop=1%"};
    EXPECT_NE(refused(conditions).find("flop"), std::string::npos);
    conditions.faults.clear();
    conditions.responseTimeMs = -1;
    EXPECT_NE(refused(conditions).find("0 to 600000 ms"), std::string::npos);
    conditions.responseTimeMs = 600001;
    EXPECT_NE(refused(conditions).find("0 to 600000 ms"), std::string::npos);
    conditions.responseTimeMs = 0;
    conditions.isPlugged = false;
    EXPECT_NE(refused(conditions).find("without a link"), std::string::npos);
}

TEST_F(SimulationTest, RefusesToStartWithAMistakeInItsOptions)
{
    options.stations = {1, 0};
    EXPECT_NE(refusal().find("1 to 247"), std::string::npos);
    options.stations = {1, 1};
    EXPECT_NE(refusal().find("1 to 247"), std::string::npos);
    options.stations.clear();
    EXPECT_NE(refusal().find("1 to 247"), std::string::npos);
    options = SimulationOptions();
    options.faults = {"flop=1%"};
    EXPECT_NE(refusal().find("flop"), std::string::npos);
    options = SimulationOptions();
    options.set = {"2/R_W:1=1"};
    EXPECT_NE(refusal().find("no station 2"), std::string::npos);
    options = SimulationOptions();
    options.hold = {"R_W:x"};
    EXPECT_NE(refusal().find("R_W:x"), std::string::npos);
    options = SimulationOptions();
    options.loadFile = inFolder("none");
    EXPECT_NE(refusal().find("none: "), std::string::npos);
    options = SimulationOptions();
    options.logFile = inFolder("no/such/folder");
    EXPECT_NE(refusal().find("no/such/folder: "), std::string::npos);
    options = SimulationOptions();
    options.device = inFolder("none");
    EXPECT_NE(refusal().find("none: "), std::string::npos);
}

} // namespace
} // namespace dov417::simulator
