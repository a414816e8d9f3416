#include "panel/desk/request_words.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

TEST(TheWordsOfARequest, AreAddressesAsTheyAreWrittenElsewhere)
{
    const std::pair<const char*, const char*> names[] = {
        {"read  1#R_W32(2)", "read 1/R_W:32..33"},
        {"write 2#T5(1)", "write 2/T:5"},
        {"read  247#I_W0(128)", "read 247/I_W:0..127"},
        {"write 1#M_bit1.2(1)", "write 1/M_bit:1.2"},
        {"write 1#M_bit1.14(4)", "write 1/M_bit:1.14..2.1"},
        {"station 1 answers others, but not 1#R_W9000(5) since 10:00:00; 3#R_D200(2), too",
         "station 1 answers others, but not 1/R_W:9000..9004 since 10:00:00; 3/R_D:200..201, too"},
    };
    for (const auto& [own, shown] : names)
        EXPECT_EQ(withAddresses(own).toStdString(), shown);
}

TEST(TheWordsOfARequest, LeaveAllElseAsItIs)
{
    for (const char* const text : {"", "the port  is away", "unit #3 (2)", "1#R_W", "T5(1)"})
        EXPECT_EQ(withAddresses(text).toStdString(), text);
}

} // namespace

} // namespace dov417
