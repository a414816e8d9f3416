#include "live/controller_process.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <string>
#include <unistd.h>

#include "line/frame_text.h"
#include "loaded_library.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

using ::testing::HasSubstr;

std::string ask(const std::string& port, const char* request, int length)
{
    constexpr int patienceMilliseconds = 300000;
    const QByteArray bytes = QByteArray::fromHex(request);
    const int descriptor = open(port.c_str(), O_RDWR | O_NOCTTY);
    EXPECT_EQ(write(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size())),
              bytes.size());
    QByteArray reply;
    pollfd arrival = {descriptor, POLLIN, 0};
    char byte = 0;
    while (reply.size() < length && poll(&arrival, 1, patienceMilliseconds) == 1 &&
           read(descriptor, &byte, 1) == 1)
        reply.append(byte);
    close(descriptor);
    return hexText(reply);
}

TEST(AControllerProcess, ServesWhatItsOptionsSay)
{
    simulator::SimulationOptions options;
    options.stations = {2};
    options.set = {"2/R_W:10=0x1234"};
    const ControllerProcess controller(options);
    EXPECT_EQ(ask(controller.port(), "02 03 05 0A 00 01 A4 F7", 7), "02 03 02 12 34 F1 33");
}

TEST(AControllerProcess, SaysWhyItDoesNotStart)
{
    simulator::SimulationOptions options;
    options.faults = {"flop=10%"};
    EXPECT_THAT(complaint([&] { ControllerProcess controller(options); }),
                HasSubstr("the simulated controller says: \"flop=10%\": no such kind of fault"));
}

TEST(AControllerProcess, IsInAGroupOfItsOwnWhereNoCtrlCReachesIt)
{
    const ControllerProcess controller{simulator::SimulationOptions()};
    const auto process = static_cast<pid_t>(controller.processId());
    EXPECT_EQ(getpgid(process), process);
    EXPECT_NE(getpgrp(), process);
}

class AControllerProcessThatIsToldOrders : public ::testing::Test {
protected:
    void start()
    {
        controller = std::make_unique<ControllerProcess>(options);
        controller->onReport([this](const ControllerReport& report) { reports.push_back(report); });
    }
    ControllerReport reportOf(const simulator::Conditions& wanted)
    {
        reports.clear();
        controller->setConditions(wanted);
        EXPECT_TRUE(waitUntil([this]() { return !reports.empty(); }));
        return reports.empty() ? ControllerReport() : reports.back();
    }

    QTemporaryDir folder;
    simulator::SimulationOptions options;
    simulator::Conditions conditions;
    std::unique_ptr<ControllerProcess> controller;
    std::vector<ControllerReport> reports;
};

TEST_F(AControllerProcessThatIsToldOrders, ServesUnderThem)
{
    options.set = {"R_W:10=0x1234"};
    start();
    conditions.faults = {"echo=every:1"};
    EXPECT_TRUE(reportOf(conditions).conditions == conditions);
    EXPECT_EQ(ask(controller->port(), "01 03 05 0A 00 01 A4 C4", 15),
              "01 03 05 0A 00 01 A4 C4 01 03 02 12 34 B5 33");
    EXPECT_EQ(reportOf(conditions).counts.kinds.at("echo"), 1U);
}

TEST_F(AControllerProcessThatIsToldOrders, LetsItsPortGoAndComeBackUnderItsName)
{
    options.link = folder.filePath("controller").toStdString();
    options.set = {"R_W:10=0x1234"};
    start();
    ASSERT_EQ(controller->port(), options.link);
    conditions.isPlugged = false;
    EXPECT_FALSE(reportOf(conditions).conditions.isPlugged);
    EXPECT_FALSE(QFileInfo(QString::fromStdString(options.link)).isSymLink());
    conditions.isPlugged = true;
    EXPECT_TRUE(reportOf(conditions).conditions.isPlugged);
    EXPECT_EQ(ask(controller->port(), "01 03 05 0A 00 01 A4 C4", 7), "01 03 02 12 34 B5 33");
}

TEST_F(AControllerProcessThatIsToldOrders, SaysWhyItRefuses)
{
    start();
    conditions.isPlugged = false; // without a link
    EXPECT_THAT(reportOf(conditions).refused, HasSubstr("without a link"));
}

// It is told nothing more before it has answered, and then the latest.
TEST_F(AControllerProcessThatIsToldOrders, IsToldTheLatestWhileItIsBusy)
{
    start();
    const auto process = static_cast<pid_t>(controller->processId());
    kill(process, SIGSTOP);
    for (conditions.responseTimeMs = 1; conditions.responseTimeMs < 100000;
         ++conditions.responseTimeMs)
        controller->setConditions(conditions);
    kill(process, SIGCONT);
    ASSERT_TRUE(waitUntil([this]() { return reports.size() >= 2; }));
    EXPECT_EQ(reports.at(0).conditions.responseTimeMs, 1);
    EXPECT_EQ(reports.at(1).conditions.responseTimeMs, 99999);
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(AControllerProcessThatIsToldOrders, EndsNothingWhereItHasEndedItself)
{
    start();
    const auto process = static_cast<pid_t>(controller->processId());
    kill(process, SIGKILL);
    ASSERT_TRUE(waitUntil([process]() {
        std::ifstream status("/proc/" + std::to_string(process) + "/stat");
        std::string text;
        std::getline(status, text);
        return text.empty() || text.find(") Z ") != std::string::npos;
    }));
    for (int i = 0; i < 3; ++i)
        controller->setConditions(conditions);
    EXPECT_TRUE(reports.empty());
}

TEST(AControllerProcess, IsGoneWithItsOwner)
{
    pid_t process = 0;
    {
        const ControllerProcess controller{simulator::SimulationOptions()};
        process = static_cast<pid_t>(controller.processId());
        EXPECT_EQ(kill(process, 0), 0);
    }
    EXPECT_EQ(kill(process, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(AControllerProcess, IsGoneWithItsOwnerAlsoWhereItHearsNothing)
{
    pid_t process = 0;
    {
        const ControllerProcess controller{simulator::SimulationOptions()};
        process = static_cast<pid_t>(controller.processId());
        kill(process, SIGSTOP);
    }
    EXPECT_EQ(kill(process, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(AControllerProcess, EndsEvenWhereItsOwnerIgnoresTheSignalForIt)
{
    std::signal(SIGTERM, SIG_IGN);
    pid_t process = 0;
    {
        const ControllerProcess controller{simulator::SimulationOptions()};
        process = static_cast<pid_t>(controller.processId());
        std::ifstream status("/proc/" + std::to_string(process) + "/status");
        std::string word;
        while (status >> word && word != "SigCgt:") {
        }
        status >> std::hex;
        unsigned long long caught = 0;
        status >> caught;
        EXPECT_NE(caught >> (SIGTERM - 1) & 1U, 0U);
    }
    std::signal(SIGTERM, SIG_DFL);
}

} // namespace

} // namespace dov417
