#include "planning/weight_order.h"

#include <climits>

#include "uncalled_functions.h"
#include "world.h"

namespace {

class RegisterWeight : public DriverTest {
protected:
    ~RegisterWeight() override
    {
        driver.regNames = names;
    }
    const QStringList names = driver.regNames;
};

TEST_F(RegisterWeight, IsStationThenTypeThenAddress)
{
    EXPECT_EQ(getRegAddressWeight(1, name("I_W"), 7, 1), 983032); // 1 * 720885 + 4 * 65535 + 7
    EXPECT_EQ(getRegAddressWeight(2, name("R_W"), 3999, 1), 1904514);
    EXPECT_EQ(getRegAddressWeight(0, name("X"), 0, 1), -65535);
}

TEST_F(RegisterWeight, DoesNotLookAtTheLastArgument)
{
    for (int unused : {0, 1, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(getRegAddressWeight(1, name("I_W"), 7, unused), 983032);
    }
}

TEST_F(RegisterWeight, FollowsTheDriversOwnListOfNames)
{
    driver.regNames = QStringList();
    driver.regNames << name("T") << name("X") << name("T");
    EXPECT_EQ(getRegAddressWeight(1, name("T"), 3, 1), 196608);   // 3 * 65535 + 3
    EXPECT_EQ(getRegAddressWeight(1, name("X"), 3, 1), 262143);   // (3 + 1) * 65535 + 3
    EXPECT_EQ(getRegAddressWeight(1, name("I_W"), 3, 1), 131073); // (3 - 1) * 65535 + 3
}

// A name that the list has twice counts where it stands first; equal weights keep their order.
TEST_F(RegisterWeight, SortsRecordsByTheDriversOwnListOfNames)
{
    driver.regNames = QStringList();
    driver.regNames << name("T") << name("X") << name("R_W") << name("T") << name("X");
    QVector<_RCP_VAR_PRO> records;
    records << recipeRecord(1, "R_W", 1, 1, 0) << recipeRecord(1, "X", 1, 1, 0)
            << recipeRecord(1, "T", 2, 1, 0) << recipeRecord(1, "T", 1, 1, 0)
            << recipeRecord(1, "T", 2, 1, 9) << recipeRecord(1, "C", 1, 1, 0);
    sortByWeight(records);
    std::string order;
    for (const _RCP_VAR_PRO& record : records) {
        order += text(record.regName) + std::to_string(record.address) +
                 (record.bufOffset != 0 ? "second " : " ");
    }
    EXPECT_EQ(order, "C1 T1 T2 T2second X1 R_W1 ");
}

} // namespace
