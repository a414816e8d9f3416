#include "tool/live_command.h"

#include <csignal>

#include "loaded_library.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

class ALiveCommand : public LoadedLibrary {
protected:
    ALiveCommand()
    {
        options.port = slave.port().toStdString();
    }
    PtySlave slave;
    LineOptions options;
};

TEST_F(ALiveCommand, EndsWhenALostPortDoesNotComeBackInTime)
{
    LiveCommand command(library, options, {});
    command.beQuiet();
    command.endWithoutPort(milliseconds(1));
    command.open();
    slave.unplug();
    ASSERT_TRUE(waitUntil([&command]() { return !command.interruption().empty(); }));
    EXPECT_EQ(command.interruption(), "the port did not come back");
    command.run(); // has ended, so it does not wait
}

TEST_F(ALiveCommand, ThatWasEndedBeforeItsLoopDoesNotWait)
{
    LiveCommand command(library, options, {});
    command.end();
    command.run();
    EXPECT_EQ(command.interruption(), "");
    EXPECT_EQ(command.finish(true), exitDone);
    EXPECT_EQ(command.finish(false), exitFailed);
}

TEST_F(ALiveCommand, SaysWhyThePortCannotBeHad)
{
    options.port = "/dev/there_is_none";
    LiveCommand command(library, options, {});
    EXPECT_EQ(complaint([&] { command.open(); }), "there is no port /dev/there_is_none");
}

TEST_F(ALiveCommand, ThatStaysOpenKeepsItsLineWhenACommandEnds)
{
    LiveCommand command(library, options, {});
    command.open();
    command.stayOpen(false, []() {});
    for (const int gap : {125, 20, 20}) {
        command.begin(gap);
        command.end();
        command.run();
        EXPECT_TRUE(command.session().isOpen());
        EXPECT_EQ(command.session().settings().gap, gap);
        EXPECT_EQ(command.finish(false), exitFailed);
    }
    command.open(); // has been
    command.leave();
    EXPECT_FALSE(command.isToLeave());
}

TEST_F(ALiveCommand, ThatStaysOpenEndsWhatAnInterruptedCommandAwaits)
{
    LiveCommand command(library, options, {});
    command.open();
    command.stayOpen(false, []() {});
    command.begin(20);
    command.endWithoutPort();
    Address address;
    address.regName = "R_W";
    std::vector<std::string> ends;
    command.session().readOnce(address,
                               [&ends](const Result& result) { ends.push_back(result.reason); });
    QTimer::singleShot(0, [&command]() { command.interrupt(); });
    command.run();
    EXPECT_EQ(ends, (std::vector<std::string>{"interrupted"}));
    EXPECT_EQ(command.interruption(), "interrupted");
    command.begin(20);
    EXPECT_EQ(command.interruption(), "");
}

TEST_F(ALiveCommand, ThatStaysOpenSaysWhatComesBetweenCommands)
{
    LiveCommand command(library, options, {});
    command.open();
    int idle = 0;
    command.stayOpen(false, [&idle]() { ++idle; });
    raise(SIGINT);
    ASSERT_TRUE(waitUntil([&idle]() { return idle == 1; }));
    EXPECT_FALSE(command.isToLeave());
    raise(SIGTERM);
    ASSERT_TRUE(waitUntil([&idle]() { return idle == 2; }));
    EXPECT_TRUE(command.isToLeave());
}

TEST_F(ALiveCommand, ThatStaysOpenDoesNotWaitForeverForAPortThatIsAwayAlready)
{
    LiveCommand command(library, options, {});
    command.beQuiet();
    command.open();
    command.stayOpen(false, []() {});
    slave.unplug();
    ASSERT_TRUE(waitUntil([&command]() { return !command.session().statistics().portIsOpen; }));
    command.begin(20);
    command.beQuiet();
    command.endWithoutPort(milliseconds(1));
    command.run();
    EXPECT_EQ(command.interruption(), "the port did not come back");
}

} // namespace

} // namespace dov417
