#include "tool/live_line.h"

#include <QTemporaryFile>

#include "loaded_library.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using ::testing::EndsWith;

class ALiveLine : public LoadedLibrary {
protected:
    ALiveLine()
    {
        options.port = "port"; // nobody opens it here
    }
    LineOptions options;
};

TEST_F(ALiveLine, LogsThatNoReplyCameAndHowLongItWasAwaited)
{
    QTemporaryFile log;
    ASSERT_TRUE(log.open());
    options.log = log.fileName().toStdString();
    options.timeoutMs = 70;
    LiveLine line(library, options, {});
    line.runnerEvents().received(Reception());
    EXPECT_THAT(log.readAll().toStdString(), EndsWith(" -- | no reply within 70 ms\n"));
}

TEST_F(ALiveLine, EndsWhenALostPortDoesNotComeBackInTime)
{
    LiveLine line(library, options, {});
    line.beQuiet();
    line.endWithoutPort(milliseconds(1));
    line.runnerEvents().port(false, "port is gone");
    ASSERT_TRUE(waitUntil([&line]() { return !line.interruption().empty(); }));
    EXPECT_EQ(line.interruption(), "the port did not come back");
    line.run(); // has ended, so it does not wait
}

} // namespace

} // namespace dov417
