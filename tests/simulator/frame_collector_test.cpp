#include "simulator/frame_collector.h"

#include <gtest/gtest.h>

#include "support.h"

namespace dov417::simulator {
namespace {

const char* const read = "01 03 05 0A 00 01 A4 C4";
const char* const write = "01 10 05 0A 00 02 04 00 0A 01 02 EC D3";

TEST(FrameCollector, HasARequestWithItsLastByte)
{
    for (const char* request : {read, write}) {
        FrameCollector collector;
        const QByteArray bytes = bytesOf(request);
        for (int i = 0; i + 1 < bytes.size(); ++i) {
            collector.append(bytes.mid(i, 1));
            EXPECT_TRUE(collector.takeFrame().isEmpty()) << i;
        }
        collector.append(bytes.right(1));
        EXPECT_EQ(hexOf(collector.takeFrame()), request);
        EXPECT_TRUE(collector.isEmpty());
    }
}

TEST(FrameCollector, TakesRequestsApartThatCameTogether)
{
    FrameCollector collector;
    collector.append(bytesOf(read) + bytesOf(write) + bytesOf("01 03"));
    EXPECT_EQ(hexOf(collector.takeFrame()), read);
    EXPECT_EQ(hexOf(collector.takeFrame()), write);
    EXPECT_TRUE(collector.takeFrame().isEmpty());
    EXPECT_EQ(hexOf(collector.takeRest()), "01 03");
    EXPECT_TRUE(collector.isEmpty());
}

TEST(FrameCollector, LeavesABadCrcAndAnUnknownFunctionToTheSilence)
{
    for (const char* bytes : {"01 03 05 0A 00 01 A4 C5", "01 04 00 00 00 01 31 CA"}) {
        FrameCollector collector;
        collector.append(bytesOf(bytes));
        EXPECT_TRUE(collector.takeFrame().isEmpty());
        EXPECT_EQ(hexOf(collector.takeRest()), bytes);
    }
}

TEST(FrameCollector, NoticesBytesThatNeverEnd)
{
    FrameCollector collector;
    collector.append(QByteArray(4096, 'x'));
    EXPECT_FALSE(collector.isFlooded());
    collector.append("x");
    EXPECT_TRUE(collector.isFlooded());
}

} // namespace
} // namespace dov417::simulator
