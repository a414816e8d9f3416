// A panel loads and unloads drivers as projects come and go: nothing may stay behind, and what
// the host was handed must outlive the library.
#include <QMutex>
#include <memory>
#include <vector>

#include "heap.h"
#include "library.h"

namespace {

const int rounds = 200;

const char* const registerNames = "I_bit,Q_bit,M_bit,R_bit,I_W,Q_W,M_W,R_W,R_D,T,C";

KEY_ADDRESS watched(const char* regName, int address, int length)
{
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = 1;
    key.regName = QString::fromLatin1(regName);
    key.address = address;
    key.length = length;
    return key;
}

// Everything that the host keeps of one life of the library.
struct Kept {
    QString version;
    QString parameter;
    QString page;
    QStringList types;
    QStringList descriptions;
    QVector<QString> copies;
    QString errorText;
    FRAME_PRO frame;
    std::vector<QString> callbackNames;
};

Kept* keeping = nullptr;

void keepName(int, int, QString& regName, int)
{
    keeping->callbackNames.push_back(regName);
    regName.append(QLatin1String(" changed by the host"));
}

// One pass through all nineteen functions.
void useEverything(const Library& library, Kept& kept)
{
    keeping = &kept;
    std::vector<unsigned char> block(60117, 0);
    std::vector<unsigned short> recipe(64, 0);
    QMutex mutex;
    const QString registers = QString::fromLatin1("R_W");

    kept.version = LOADED(library, intf_getVersion)();
    int type = -1;
    LOADED(library, intf_getProtocolType)(&type);
    LOADED(library, intf_getDriverParameter)(kept.parameter);
    LOADED(library, intf_SetDriverPropertyPage)(QString::fromLatin1("1_1"));
    LOADED(library, intf_getDriverPropertyPage)(kept.page);
    LOADED(library, intf_getRegListByType)(0, &kept.types);
    LOADED(library, intf_getRegListByType)(1, &kept.types);
    for (int i = 0; i < kept.types.size(); ++i) {
        LOADED(library, intf_getRegDiscription)(kept.types.at(i), &kept.descriptions);
    }
    int address = 0;
    LOADED(library, intf_checkAddr)(registers, QString::fromLatin1("10"), &address, 0, 1, 0);
    LOADED(library, intf_checkAddrValidity)(registers, QString::fromLatin1("10"), &address, 1, 1);
    QVector<int> addresses;
    LOADED(library, intf_multiCopy)(registers, 3998, 3, 1, kept.copies, addresses);
    LOADED(library, intf_multiCopy)(QString::fromLatin1("M_bit"), 15, 2, 1, kept.copies, addresses);

    LOADED(library, intf_setAddrValueChangeCallBack)(keepName);
    LOADED(library, intf_initProperty)
    (block.data(), 0, recipe.data(), nullptr, "7#0#0#3#10", &mutex);
    QList<KEY_ADDRESS> keys;
    keys << watched("R_W", 10, 1) << watched("R_bit", 160, 1) << watched("R_D", 10, 2)
         << watched("T", 3, 1);
    LOADED(library, intf_addrMerge)(keys);
    KEY_ADDRESS condition = watched("R_W", 100, 1);
    LOADED(library, intf_addConditionRead)(condition, 3);
    _RCP_VAR_PRO record = _RCP_VAR_PRO();
    record.linkId = 7;
    record.stationNo = 1;
    record.regName = registers;
    record.length = 4;
    QVector<_RCP_VAR_PRO> records(1, record);
    LOADED(library, intf_setRcpAddress)(records);
    unsigned char value[2] = {0x34, 0x12};
    LOADED(library, intf_setData)(1, registers, 10, 1, value, 2);
    unsigned char out[2] = {0, 0};
    LOADED(library, intf_getData)(1, registers, 10, 1, out);

    LOADED(library, intf_getSendFrame)(&kept.frame);
    QByteArray echo(reinterpret_cast<const char*>(kept.frame.frame), kept.frame.sendLength);
    EXPECT_EQ(LOADED(library, intf_dealRcvFrame)(&echo, &kept.errorText), 1);
    // Ends in the middle of a request.
    EXPECT_EQ(LOADED(library, intf_getSendFrame)(&kept.frame), 1);
    EXPECT_EQ(out[0], 0x34);
    keeping = nullptr;
}

void loadAndUnload()
{
    const Library library;
    EXPECT_GT(Library::mappings(), 0);
}

void loadUseAndUnload()
{
    const Library library;
    std::unique_ptr<Kept> kept(new Kept());
    useEverything(library, *kept);
}

class Unloaded : public ::testing::Test {
protected:
    const Quiet quiet;
};

TEST_F(Unloaded, LibraryLeavesTheProcess)
{
    ASSERT_FALSE(Library::isLoaded());
    {
        const Library library;
        EXPECT_TRUE(Library::isLoaded());
        EXPECT_GT(Library::mappings(), 0);
    }
    EXPECT_FALSE(Library::isLoaded());
    EXPECT_EQ(Library::mappings(), 0);
}

TEST_F(Unloaded, LibraryLeavesTheProcessAfterEveryFunctionWasUsed)
{
    for (int i = 0; i < rounds; ++i) {
        loadUseAndUnload();
        ASSERT_FALSE(Library::isLoaded()) << "round " << i;
        ASSERT_EQ(Library::mappings(), 0) << "round " << i;
    }
}

TEST_F(Unloaded, NoAllocationStaysOfALoadWithoutAnyCall)
{
    EXPECT_EQ(leftBehind(loadAndUnload, rounds), 0);
}

TEST_F(Unloaded, NoAllocationStaysAfterEveryFunctionWasUsed)
{
    EXPECT_EQ(leftBehind(loadUseAndUnload, rounds), 0);
}

TEST_F(Unloaded, StringsOfTheHostStayReadable)
{
    Kept kept = Kept();
    {
        const Library library;
        useEverything(library, kept);
    }
    ASSERT_EQ(Library::mappings(), 0);

    EXPECT_EQ(latin1(kept.version), "2.0.0.0");
    EXPECT_TRUE(kept.parameter.startsWith(QLatin1String("0,38400,8,EVEN,1,0,1,")));
    EXPECT_TRUE(kept.parameter.endsWith(QLatin1String(registerNames)));
    EXPECT_EQ(latin1(kept.page), "0_0");
    EXPECT_EQ(latin1(kept.types.join(QLatin1String(","))), registerNames);
    ASSERT_EQ(kept.descriptions.size(), 55);
    EXPECT_EQ(latin1(QStringList(kept.descriptions.mid(40, 5)).join(QLatin1String(","))),
              "DDDD,0,3998,2,1");
    ASSERT_EQ(kept.copies.size(), 5);
    EXPECT_EQ(latin1(kept.copies.at(0)), "3998");
    EXPECT_EQ(latin1(kept.copies.at(2)), "3999");
    EXPECT_EQ(latin1(kept.copies.at(4)), "1.0");
    EXPECT_EQ(latin1(kept.errorText), "1#R_W10(1)");
    EXPECT_FALSE(kept.frame.request.regName.isEmpty());
    ASSERT_EQ(kept.callbackNames.size(), 2u);
    EXPECT_EQ(latin1(kept.callbackNames.at(0)), "R_W");
    EXPECT_EQ(latin1(kept.callbackNames.at(1)), "R_D");

    // And they are the host's own, to change and to free.
    kept.version.append(QLatin1String("!"));
    kept.types[0].append(QLatin1String("!"));
    kept.callbackNames[0][0] = QLatin1Char('M');
    EXPECT_EQ(latin1(kept.version), "2.0.0.0!");
    EXPECT_EQ(latin1(kept.types.at(0)), "I_bit!");
    EXPECT_EQ(latin1(kept.callbackNames.at(0)), "M_W");
}

TEST_F(Unloaded, EveryLoadStartsFromTheBeginning)
{
    for (int i = 0; i < 3; ++i) {
        const Library library;
        Protocol& driver = library.driver();
        EXPECT_EQ(latin1(driver.regNames.join(QLatin1String(","))), registerNames);
        EXPECT_TRUE(driver.readList.isEmpty());
        EXPECT_TRUE(driver.writeList.isEmpty());
        EXPECT_TRUE(driver.conditionList.isEmpty());
        EXPECT_TRUE(driver.dataAreas.isEmpty());
        EXPECT_TRUE(driver.recipeVars.isEmpty());
        EXPECT_TRUE(driver.recipeRequests.isEmpty());
        EXPECT_TRUE(driver.groupStarts.isEmpty());
        EXPECT_TRUE(driver.currentVars.isEmpty());
        EXPECT_TRUE(driver.sendList.isEmpty());
        EXPECT_TRUE(driver.spareList.isEmpty());
        EXPECT_TRUE(driver.propertyPage.isEmpty());
        EXPECT_EQ(driver.valueChangeCallBack, nullptr);
        EXPECT_EQ(driver.callBackTag, 0);
        EXPECT_EQ(driver.writeToCacheOnly, 0);
        EXPECT_EQ(driver.propertyField3, 0);
        EXPECT_EQ(driver.hostArg2, 0);
        EXPECT_EQ(driver.burstCount, 0);
        EXPECT_EQ(driver.handshakeRequest, 0);
        EXPECT_EQ(driver.retryCount, 0);
        EXPECT_EQ(driver.pieceBitLimit, 0);
        EXPECT_EQ(driver.pieceWordLimit, 0);
        EXPECT_EQ(driver.commFailed, 0);
        EXPECT_EQ(driver.frameIndex, 0);
        EXPECT_EQ(driver.frameVarCount, 0);
        EXPECT_EQ(driver.currentVar.stationNo, 0);
        EXPECT_EQ(driver.currentVar.kind, 0);
        EXPECT_EQ(driver.retryLimit, 0);
        EXPECT_EQ(driver.mergeGap, 0);
        EXPECT_EQ(driver.hostBlock, nullptr);
        EXPECT_EQ(driver.recipeBuffer, nullptr);
        EXPECT_EQ(driver.hostMutex, nullptr);
        EXPECT_EQ(driver.initDone, 0);
        EXPECT_EQ(driver.sendKind, 0);
        EXPECT_EQ(driver.recipeIndex, 0);
        EXPECT_EQ(driver.spareWord, 0);

        Kept kept = Kept();
        useEverything(library, kept);
    }
}

TEST_F(Unloaded, LibraryThatWasNeverInitialisedAnswersNevertheless)
{
    const Library library;
    FRAME_PRO frame = FRAME_PRO();
    EXPECT_EQ(LOADED(library, intf_getSendFrame)(&frame), 0);
    QByteArray reply = fromHex("0103021234b533");
    QString text = QString::fromLatin1("before");
    EXPECT_EQ(LOADED(library, intf_dealRcvFrame)(&reply, &text), 0);
    EXPECT_EQ(latin1(text), "");
    // Without a callback and without settings a write still goes out.
    unsigned char value[2] = {0x34, 0x12};
    EXPECT_EQ(LOADED(library, intf_setData)(1, QString::fromLatin1("R_W"), 10, 1, value, 2), 1);
    EXPECT_EQ(LOADED(library, intf_getSendFrame)(&frame), 1);
    EXPECT_EQ(toHex(frame.frame, frame.sendLength), "0106050a1234a473");
}

} // namespace
