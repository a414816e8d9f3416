// The editor's questions about register types: the shipped ones, and such as another table might
// have.
#include <climits>

#include "editor/address_check.h"
#include "world.h"

namespace {

std::string joined(const QStringList& list)
{
    return text(list.join(QLatin1String(",")));
}

TEST(RegisterList, OfBitTypesIsTheFour)
{
    QStringList list;
    EXPECT_EQ(intf_getRegListByType(0, &list), 1);
    EXPECT_EQ(joined(list), "I_bit,Q_bit,M_bit,R_bit");
}

TEST(RegisterList, OfEveryOtherKindIsTheSevenWordTypesButOnlyKindOneIsSaidToExist)
{
    const struct {
        int kind;
        int result;
    } rows[] = {{1, 1}, {2, 0}, {5, 0}, {-1, 0}, {INT_MAX, 0}, {INT_MIN, 0}};
    for (const auto& row : rows) {
        QStringList list;
        EXPECT_EQ(intf_getRegListByType(row.kind, &list), row.result) << row.kind;
        EXPECT_EQ(joined(list), "I_W,Q_W,M_W,R_W,R_D,T,C") << row.kind;
    }
}

TEST(RegisterList, IsAppended)
{
    QStringList list(name("before"));
    intf_getRegListByType(0, &list);
    intf_getRegListByType(0, &list);
    EXPECT_EQ(joined(list), "before,I_bit,Q_bit,M_bit,R_bit,I_bit,Q_bit,M_bit,R_bit");
}

TEST(RegisterList, WithoutAPlaceForItGivesTheSameResult)
{
    EXPECT_EQ(intf_getRegListByType(0, nullptr), 1);
    EXPECT_EQ(intf_getRegListByType(5, nullptr), 0);
}

TEST(RegisterDescription, IsFormatRangeWidthAndAccess)
{
    const struct {
        const char* regName;
        const char* texts;
    } rows[] = {
        {"I_bit", "DDD.DD,0.0,127.15,0,1"},
        {"Q_bit", "DDD.DD,0.0,127.15,0,1"},
        {"M_bit", "DDD.DD,0.0,127.15,0,1"},
        {"R_bit", "DDDD.DD,0.0,3999.15,0,1"},
        {"I_W", "DDD,0,127,1,1"},
        {"Q_W", "DDD,0,127,1,1"},
        {"M_W", "DDD,0,127,1,1"},
        {"R_W", "DDDD,0,3999,1,1"},
        {"R_D", "DDDD,0,3998,2,1"},
        {"T", "DDD,0,127,1,1"},
        {"C", "DDD,0,127,1,1"},
    };
    for (const auto& row : rows) {
        QStringList list;
        EXPECT_EQ(intf_getRegDiscription(name(row.regName), &list), 0) << row.regName;
        EXPECT_EQ(joined(list), row.texts) << row.regName;
    }
}

TEST(RegisterDescription, IsAppended)
{
    QStringList list(name("before"));
    intf_getRegDiscription(name("R_D"), &list);
    intf_getRegDiscription(name("T"), &list);
    EXPECT_EQ(joined(list), "before,DDDD,0,3998,2,1,DDD,0,127,1,1");
}

TEST(RegisterDescription, OfAnUnknownNameIsNothing)
{
    QStringList list(name("before"));
    for (const char* regName : {"X", "", "r_d", "R_D "}) {
        EXPECT_EQ(intf_getRegDiscription(name(regName), &list), 0) << regName;
    }
    EXPECT_EQ(intf_getRegDiscription(QString(), &list), 0);
    EXPECT_EQ(joined(list), "before");
}

TEST(RegisterDescription, WithoutAPlaceForItIsTolerated)
{
    EXPECT_EQ(intf_getRegDiscription(name("R_D"), nullptr), 0);
    EXPECT_EQ(intf_getRegDiscription(name("X"), nullptr), 0);
}

// A register type that the shipped table does not have, of the format "DDD" and the range 0..9.
struct OtherType {
    OtherType(const char* regName, const char* dataBits, const char* access, const char* unitBits)
        : row{name("DDD"),  name("0"),      name("9"), name(dataBits),
              name(access), name(unitBits), name("0")},
          type(deriveRegisterType(name(regName), row, 3, 0))
    {
    }

    std::string check(const char* addressText, int length, int dataType, int accessMode,
                      bool withAccess = true) const
    {
        const AddressQuestion asked = {type.name,  name(addressText), length,    dataType == -1,
                                       withAccess, dataType,          accessMode};
        int address = untouched;
        const int code = checkAgainst(asked, type, row, address);
        return std::to_string(code) + " at " + std::to_string(address);
    }
    std::string description() const
    {
        QStringList list;
        describe(type, row, list);
        return joined(list);
    }

    QString row[rangeFieldCount];
    RegisterType type;
};

TEST(OtherRegisterType, ThatCanOnlyBeReadRefusesWritesBeforeTypeAndText)
{
    const OtherType readOnly("V_D", "32", "R", "16");
    EXPECT_EQ(readOnly.check("5", 2, 3, 1), "6 at 4711");
    EXPECT_EQ(readOnly.check("5", 2, 3, 2), "6 at 4711");
    EXPECT_EQ(readOnly.check("x", 2, 2, 1), "6 at 4711");
    // A wrong kind comes before it...
    EXPECT_EQ(readOnly.check("5", 2, -1, 1), "1 at 4711");
    // ...and any other access is none of a write.
    for (int access : {0, 3, -1}) {
        EXPECT_EQ(readOnly.check("5", 2, 3, access), "0 at 5") << access;
    }
    EXPECT_EQ(readOnly.check("5", 2, 2, 0), "5 at 4711");
    EXPECT_EQ(readOnly.check("5", 2, 2, 1, false), "0 at 5");
}

TEST(OtherRegisterType, ThatCanBeWrittenTakesEveryAccess)
{
    for (const char* access : {"RW", "W", "", "r"}) {
        const OtherType writable("V_W", "16", access, "16");
        for (int accessMode : {0, 1, 2}) {
            EXPECT_EQ(writable.check("5", 1, 0, accessMode), "0 at 5") << access;
        }
    }
}

TEST(OtherRegisterType, IsCheckedInItsOwnUnits)
{
    // Of byte units a word takes two, of 32-bit units half of one.
    const OtherType bytes("V_W", "16", "RW", "8");
    EXPECT_EQ(bytes.check("0", 5, 0, 0), "0 at 0");
    EXPECT_EQ(bytes.check("0", 6, 0, 0), "2 at 0");
    EXPECT_EQ(bytes.check("8", 1, 0, 0), "0 at 8");
    EXPECT_EQ(bytes.check("9", 1, 0, 0), "2 at 9");
    const OtherType doubles("V_W", "16", "RW", "32");
    EXPECT_EQ(doubles.check("0", 20, 0, 0), "0 at 0");
    EXPECT_EQ(doubles.check("0", 21, 0, 0), "2 at 0");
    EXPECT_EQ(doubles.check("9", 3, 0, 0), "2 at 9");
}

TEST(OtherRegisterType, CountsBitsAsTheyStandWhateverItsUnits)
{
    const OtherType bytes("V_bit", "1", "RW", "8");
    EXPECT_EQ(bytes.check("0", 10, -1, 0), "0 at 0");
    EXPECT_EQ(bytes.check("0", 11, -1, 0), "2 at 0");
}

TEST(OtherRegisterType, IsDescribedByWidthAndAccessCodes)
{
    const struct {
        const char* dataBits;
        const char* access;
        const char* texts;
    } rows[] = {
        {"1", "R", "DDD,0,9,0,0"},  {"8", "RW", "DDD,0,9,1,1"}, {"16", "W", "DDD,0,9,1,2"},
        {"32", "R", "DDD,0,9,2,0"}, {"64", "", "DDD,0,9,1,1"},  {"x", "r", "DDD,0,9,1,1"},
        {"0", "WR", "DDD,0,9,1,1"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(OtherType("V_W", row.dataBits, row.access, "16").description(), row.texts);
    }
}

} // namespace
