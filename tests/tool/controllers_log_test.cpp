#include "tool/controllers_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dov417 {

namespace {

using ::testing::HasSubstr;

TEST(AControllersLog, HasFramesThatAreTooShortToAskForAnything)
{
    for (const std::string bytes : {"01", "00", "01 03", "01 03 05"}) {
        ControllersLog log({});
        const auto request = log.entry("    1.000000 <- " + bytes + "  no frame");
        ASSERT_TRUE(request) << bytes;
        EXPECT_EQ(request->direction, Direction::sent);
        EXPECT_THAT(request->meaning, HasSubstr("too short")) << bytes;
        const auto reply = log.entry("    1.100000 -> 01 83 02 C0 F1  reply");
        ASSERT_TRUE(reply) << bytes;
        EXPECT_EQ(reply->meaning, "station 1: exception 2, illegal data address, to read registers")
            << bytes;
        const auto end = log.entry("    1.200000 -> " + bytes + "  reply");
        ASSERT_TRUE(end) << bytes;
        EXPECT_THAT(end->meaning, HasSubstr("too short")) << bytes;
    }
}

} // namespace

} // namespace dov417
