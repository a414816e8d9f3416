#include "records.h"

#include <type_traits>

#include "planning/condition_reads.h"
#include "planning/recipes.h"
#include "world.h"

namespace {

struct Field {
    const char* name;
    const void* place;
    size_t size;
};

// Each field starts where the one before it ended, but for what alignment asks for.
void expectInOrder(const void* record, size_t recordSize, const std::vector<Field>& fields)
{
    const char* const start = static_cast<const char*>(record);
    std::ptrdiff_t end = 0;
    for (const Field& field : fields) {
        const std::ptrdiff_t offset = static_cast<const char*>(field.place) - start;
        EXPECT_GE(offset, end) << field.name;
        EXPECT_LT(offset - end, static_cast<std::ptrdiff_t>(sizeof(void*))) << field.name;
        end = offset + static_cast<std::ptrdiff_t>(field.size);
    }
    EXPECT_LT(static_cast<std::ptrdiff_t>(recordSize) - end,
              static_cast<std::ptrdiff_t>(sizeof(void*)));
}

template <typename Value>
Field fieldAt(const char* name, const Value& value)
{
    return {name, &value, sizeof(value)};
}

#define FIELD(member) fieldAt(#member, record.member)

TEST(RecordLayout, KeepsTheFieldsInTheirOrder)
{
    {
        const KEY_ADDRESS record = KEY_ADDRESS();
        expectInOrder(&record, sizeof(record),
                      {FIELD(tag), FIELD(hostValue), FIELD(userIndex), FIELD(stationNo),
                       FIELD(regName), FIELD(extText), FIELD(address), FIELD(bitFlag),
                       FIELD(length), FIELD(data)});
    }
    {
        const VARIABLE record = VARIABLE();
        expectInOrder(&record, sizeof(record),
                      {FIELD(kind), FIELD(stationNo), FIELD(regName), FIELD(address), FIELD(length),
                       FIELD(data)});
    }
    {
        const _RCP_VAR_PRO record = _RCP_VAR_PRO();
        expectInOrder(&record, sizeof(record),
                      {FIELD(linkId), FIELD(stationNo), FIELD(regName), FIELD(address),
                       FIELD(length), FIELD(bufOffset), FIELD(reserved)});
    }
    {
        const FRAME_PRO record = FRAME_PRO();
        expectInOrder(&record, sizeof(record),
                      {FIELD(frame), FIELD(sendLength), FIELD(replyLength), FIELD(dataPosition),
                       FIELD(dataCount), FIELD(spare), FIELD(request)});
    }
    {
        const _DATA_ record = _DATA_();
        expectInOrder(&record, sizeof(record),
                      {FIELD(spareFlag), FIELD(writePending), FIELD(pendingBits), FIELD(viewFlags),
                       FIELD(bitMonitor), FIELD(station), FIELD(area), FIELD(address),
                       FIELD(deviceValue), FIELD(pendingValue)});
    }
}

#undef FIELD

TEST(RecordLayout, HoldsItsValuesInline)
{
    EXPECT_EQ(sizeof(KEY_ADDRESS().data), 1024u);
    EXPECT_EQ(sizeof(VARIABLE().data), 1024u);
    EXPECT_EQ(sizeof(FRAME_PRO().frame), 1024u);
    EXPECT_EQ(sizeof(_DATA_().deviceValue), 4u);
    EXPECT_EQ(sizeof(_DATA_().pendingValue), 4u);
    EXPECT_EQ(sizeof(_DATA_().writePending), 1u);
    EXPECT_TRUE((std::is_same<decltype(_DATA_::pendingBits), unsigned int>::value));
    EXPECT_TRUE((std::is_same<decltype(_DATA_::viewFlags), int>::value));
    EXPECT_TRUE((std::is_same<decltype(_DATA_::bitMonitor), unsigned int>::value));
}

TEST(RecordLayout, HasNoVirtualFunctions)
{
    EXPECT_FALSE(std::is_polymorphic<KEY_ADDRESS>::value);
    EXPECT_FALSE(std::is_polymorphic<VARIABLE>::value);
    EXPECT_FALSE(std::is_polymorphic<_RCP_VAR_PRO>::value);
    EXPECT_FALSE(std::is_polymorphic<FRAME_PRO>::value);
}

TEST(Records, KeyChangedInAListLeavesTheKeyThatItWasCopiedFrom)
{
    KEY_ADDRESS original = key("R_W", 10, 5);
    original.tag = name("tag");
    original.extText = name("ext");
    original.data[0] = 1;
    original.data[1023] = 2;
    QList<KEY_ADDRESS> list;
    list.append(original);
    list[0].tag.append(QLatin1Char('!'));
    list[0].regName[0] = QLatin1Char('M');
    list[0].extText = QString();
    list[0].address = 99;
    list[0].data[0] = 9;
    list[0].data[1023] = 9;
    EXPECT_EQ(text(original.tag), "tag");
    EXPECT_EQ(text(original.regName), "R_W");
    EXPECT_EQ(text(original.extText), "ext");
    EXPECT_EQ(original.address, 10);
    EXPECT_EQ(original.data[0], 1);
    EXPECT_EQ(original.data[1023], 2);
    EXPECT_EQ(text(list.at(0).regName), "M_W");
}

TEST(Records, CopyHasEveryField)
{
    KEY_ADDRESS original = key("R_W", 10, 5, 3, -1);
    original.tag = name("tag");
    original.hostValue = 1;
    original.userIndex = 2;
    original.extText = name("ext");
    original.data[0] = 7;
    original.data[1023] = 8;
    KEY_ADDRESS copy = KEY_ADDRESS();
    copy = original;
    EXPECT_EQ(text(copy.tag), "tag");
    EXPECT_EQ(copy.hostValue, 1);
    EXPECT_EQ(copy.userIndex, 2);
    EXPECT_EQ(copy.stationNo, 3);
    EXPECT_EQ(text(copy.regName), "R_W");
    EXPECT_EQ(text(copy.extText), "ext");
    EXPECT_EQ(copy.address, 10);
    EXPECT_EQ(copy.bitFlag, -1);
    EXPECT_EQ(copy.length, 5);
    EXPECT_EQ(copy.data[0], 7);
    EXPECT_EQ(copy.data[1023], 8);
}

// A key with something in every field that no request takes over.
KEY_ADDRESS fullKey(const char* regName, int address, int length, int station)
{
    KEY_ADDRESS made = key(regName, address, length, station, 55);
    made.tag = name("tag");
    made.hostValue = 77;
    made.userIndex = 88;
    made.extText = name("ext");
    for (int i = 0; i < recordDataSize; ++i) {
        made.data[i] = 0xAB;
    }
    return made;
}

class RequestOfAKey : public DriverTest {};

TEST_F(RequestOfAKey, TakesStationNameAddressAndLengthInACyclicPlan)
{
    plan({fullKey("R_W", 10, 5, 3)});
    ASSERT_EQ(driver.readList.size(), 1);
    const VARIABLE made = driver.readList.at(0);
    EXPECT_EQ(made.kind, 4);
    EXPECT_EQ(made.stationNo, 3);
    EXPECT_EQ(text(made.regName), "R_W");
    EXPECT_EQ(made.address, 10);
    EXPECT_EQ(made.length, 5);
}

TEST_F(RequestOfAKey, TakesNothingElseInAConditionRead)
{
    const VARIABLE made = conditionRequest(runOf(fullKey("R_W", 10, 5, 3), 0), registerType(7), 66);
    EXPECT_EQ(made.kind, 66);
    EXPECT_EQ(made.stationNo, 3);
    EXPECT_EQ(text(made.regName), "R_W");
    EXPECT_EQ(made.address, 10);
    EXPECT_EQ(made.length, 5);
    EXPECT_EQ(toHex(made.data, recordDataSize), toHex(QByteArray(recordDataSize, '\0')));
}

TEST_F(RequestOfAKey, OfARecipeIsZeroedFirstAndKeepsItsKind)
{
    VARIABLE made = request("M_W", 1, 1, 1, {1, 2, 3});
    made.kind = 66;
    made.data[1023] = 4;
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 5, 0, 3), made, 0);
    EXPECT_EQ(made.kind, 66);
    EXPECT_EQ(made.stationNo, 3);
    EXPECT_EQ(text(made.regName), "R_W");
    EXPECT_EQ(made.address, 10);
    EXPECT_EQ(made.length, 5);
    EXPECT_EQ(toHex(made.data, recordDataSize), toHex(QByteArray(recordDataSize, '\0')));
}

TEST_F(RequestOfAKey, IsCarriedWholeByTheFrameThatTheHostReceives)
{
    plan({fullKey("R_W", 10, 5, 3)});
    ASSERT_NE(poll(), "");
    EXPECT_EQ(polled.request.kind, 4);
    EXPECT_EQ(polled.request.stationNo, 3);
    EXPECT_EQ(text(polled.request.regName), "R_W");
    EXPECT_EQ(polled.request.address, 10);
    EXPECT_EQ(polled.request.length, 5);
}

} // namespace
