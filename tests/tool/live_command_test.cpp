#include "tool/live_command.h"

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

} // namespace

} // namespace dov417
