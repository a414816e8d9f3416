#include "live/controller_process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <string>
#include <unistd.h>

#include "line/frame_text.h"
#include "loaded_library.h"

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
