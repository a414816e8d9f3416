#include "live/recording.h"

#include <QTemporaryFile>

#include "exchange.h"
#include "loaded_library.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using ::testing::HasSubstr;

class ARecording : public LoadedLibrary {
protected:
    // One read of R_W:10, given up after the first try.
    std::string readOnce()
    {
        QTemporaryFile file;
        EXPECT_TRUE(file.open());
        Recording recording(file.fileName().toStdString(), "settings", learnAreas(library));
        Session session(library, SessionSettings{1, 20});
        recording.follow(session);
        line.device = slave.port();
        line.isShared = isMarked; // else the slave answers one request, and no marker
        EXPECT_TRUE(session.open(line).accepted);
        Address address;
        address.regName = "R_W";
        address.first = 10;
        bool ended = false;
        session.readOnce(address, [&ended](const Result&) { ended = true; });
        EXPECT_TRUE(waitUntil([&ended]() { return ended; }));
        session.tellAll();
        EXPECT_FALSE(recording.hasFailed());
        return file.readAll().toStdString();
    }
    PtySlave slave;
    LineSettings line;
    bool isMarked = false;
};

TEST_F(ARecording, NamesTheFramesThatPassed)
{
    slave.arrived = [this](const QByteArray&) { slave.send(hex(readReply)); };
    const std::string log = readOnce();
    EXPECT_THAT(log, HasSubstr("# settings\n"));
    EXPECT_THAT(log, HasSubstr(" is open\n"));
    EXPECT_THAT(log, HasSubstr(" TX 01 03 05 0A 00 01 A4 C4 | station 1: read 1 register from 1290 "
                               "(R_W:10)\n"));
    EXPECT_THAT(log, HasSubstr(" RX 01 03 02 00 2A 39 9B | station 1: R_W:10 = 42\n"));
}

TEST_F(ARecording, TellsThatNoReplyCameAndHowLongItWasAwaited)
{
    line.timeout = milliseconds(70);
    EXPECT_THAT(readOnce(), HasSubstr(" -- | no answer within 70 ms: no byte came\n"));
}

// Of a station that is not known yet nothing but markers may go out.
TEST_F(ARecording, HasTheGarbledAnswersToMarkers)
{
    isMarked = true;
    line.timeout = milliseconds(70);
    slave.arrived = [this](const QByteArray& request) {
        QByteArray garbled = request;
        garbled[7] = static_cast<char>(garbled.at(7) ^ 1);
        slave.send(garbled);
    };
    const std::string log = readOnce();
    EXPECT_THAT(log, HasSubstr(" TX 01 08 00 00 "));
    EXPECT_THAT(log, HasSubstr(" RX 01 08 00 00 "));
    EXPECT_THAT(log, HasSubstr("bad CRC"));
    EXPECT_THAT(log, ::testing::Not(HasSubstr("no byte came")));
}

TEST_F(ARecording, KeepsWhatWasThrownAway)
{
    slave.arrived = [this](const QByteArray&) {
        slave.send(hex("0203020007BD86"));
        slave.send(hex(readReply));
    };
    EXPECT_THAT(readOnce(), HasSubstr(" RX? 02 03 02 00 07 BD 86 | "));
}

} // namespace

} // namespace dov417
