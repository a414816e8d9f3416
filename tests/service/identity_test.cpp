#include "identity.h"

#include <climits>

#include "world.h"

namespace {

class Identity : public DriverTest {
protected:
    ~Identity() override
    {
        driver.hostArg2 = 0;
    }
    static void initialise(const char* property)
    {
        EXPECT_EQ(intf_initProperty(nullptr, 0, nullptr, nullptr, property, nullptr), 1);
    }
};

TEST_F(Identity, ConstantsAreTheNamesThatHostsKnow)
{
    EXPECT_EQ(text(PROCOTOL_NAME), "dov417modbus");
    EXPECT_EQ(text(PROCOTOL_VERSION), "2.0.0.0");
    EXPECT_EQ(text(PROCOTOL_DEFALT_COM_PAR), "38400,8,EVEN,1");
    EXPECT_EQ(text(PROCOTOL_PAR_HMI_SET_MODE), "0_0");
}

// "a.b.c.d" with four numbers of 0 to 255, in one of the private ranges.
bool isPrivateAddress(const QString& address)
{
    const QStringList parts = address.split(QLatin1Char('.'));
    if (parts.size() != 4) {
        return false;
    }
    int numbers[4];
    for (int i = 0; i < 4; ++i) {
        bool converted = false;
        numbers[i] = parts.at(i).toInt(&converted);
        if (!converted || numbers[i] < 0 || numbers[i] > 255) {
            return false;
        }
    }
    return numbers[0] == 10 || (numbers[0] == 172 && numbers[1] >= 16 && numbers[1] <= 31) ||
           (numbers[0] == 192 && numbers[1] == 168);
}

TEST_F(Identity, DefaultNetworkParametersAreAPrivateAddressAndPort8000)
{
    const QStringList parts = PROCOTOL_DEFALT_IP_PAR.split(QLatin1Char(','));
    ASSERT_EQ(parts.size(), 2);
    EXPECT_TRUE(isPrivateAddress(parts.at(0))) << text(parts.at(0));
    EXPECT_EQ(text(parts.at(1)), "8000");
}

TEST_F(Identity, VersionIsTheReleased)
{
    EXPECT_EQ(text(intf_getVersion()), "2.0.0.0");
}

TEST_F(Identity, VersionIsACopyThatTheHostMayChange)
{
    QString version = intf_getVersion();
    version.append(QLatin1String(" changed"));
    EXPECT_EQ(text(intf_getVersion()), "2.0.0.0");
}

TEST_F(Identity, ParameterHasTwentyOneItemsOfWhichTheAddressAloneIsFree)
{
    QString parameter = name("what was there before");
    intf_getDriverParameter(parameter);
    QStringList items = parameter.split(QLatin1Char(','));
    ASSERT_EQ(items.size(), 21);
    EXPECT_TRUE(isPrivateAddress(items.at(7))) << text(items.at(7));
    items[7] = name("ADDRESS");
    EXPECT_EQ(text(items.join(name(","))), "0,38400,8,EVEN,1,0,1,ADDRESS,8000,dov417modbus,"
                                           "I_bit,Q_bit,M_bit,R_bit,I_W,Q_W,M_W,R_W,R_D,T,C");
}

TEST_F(Identity, ParameterUsesTheDefaultNetworkConstant)
{
    QString parameter;
    intf_getDriverParameter(parameter);
    EXPECT_EQ(text(parameter), "0,38400,8,EVEN,1,0,1," + text(PROCOTOL_DEFALT_IP_PAR) +
                                   ",dov417modbus,I_bit,Q_bit,M_bit,R_bit,I_W,Q_W,M_W,R_W,R_D,T,C");
}

TEST_F(Identity, ParameterListsTheNamesThatTheDriverHolds)
{
    const QStringList names = driver.regNames;
    driver.regNames = QStringList() << name("A") << name("B");
    QString parameter;
    intf_getDriverParameter(parameter);
    driver.regNames = names;
    EXPECT_TRUE(parameter.endsWith(QLatin1String(",8000,dov417modbus,A,B"))) << text(parameter);
}

TEST_F(Identity, ProtocolTypeIsZero)
{
    int type = 4711;
    intf_getProtocolType(&type);
    EXPECT_EQ(type, 0);
}

TEST_F(Identity, ProtocolTypeWithoutAPlaceForItIsTolerated)
{
    intf_getProtocolType(nullptr);
    EXPECT_EQ(driver.initDone, 1); // and nothing else happened
}

TEST_F(Identity, PropertyPageIsAlwaysZeroZeroWhateverWasSet)
{
    QString page = name("before");
    intf_getDriverPropertyPage(page);
    EXPECT_EQ(text(page), "0_0");
    intf_SetDriverPropertyPage(name("1_2_3"));
    EXPECT_EQ(text(driver.propertyPage), "1_2_3");
    intf_getDriverPropertyPage(page);
    EXPECT_EQ(text(page), "0_0");
}

TEST_F(Identity, CallbackIsKeptAndMayBeTakenAway)
{
    const VALUE_CHANGE_CALLBACK installed = driver.valueChangeCallBack;
    ASSERT_NE(installed, nullptr);
    intf_setAddrValueChangeCallBack(nullptr);
    EXPECT_EQ(driver.valueChangeCallBack, nullptr);
    intf_setAddrValueChangeCallBack(installed);
    EXPECT_EQ(driver.valueChangeCallBack, installed);
}

TEST_F(Identity, InitialisationStoresZeroThroughTheResultPointerAndReturnsOne)
{
    int result = 4711;
    EXPECT_EQ(intf_initProperty(nullptr, 0, nullptr, &result, "1#2#3#4#5", nullptr), 1);
    EXPECT_EQ(result, 0);
    result = 4711;
    EXPECT_EQ(intf_initProperty(nullptr, 0, nullptr, &result, "1#2", nullptr), 1);
    EXPECT_EQ(result, 0);
    result = 4711;
    EXPECT_EQ(intf_initProperty(nullptr, 0, nullptr, &result, nullptr, nullptr), 1);
    EXPECT_EQ(result, 0);
}

TEST_F(Identity, FiveNumbersSetTheFiveFieldsAndThePieceLimits)
{
    initialise("1#2#3#4#5");
    EXPECT_EQ(driver.callBackTag, 1);
    EXPECT_EQ(driver.writeToCacheOnly, 2);
    EXPECT_EQ(driver.propertyField3, 3);
    EXPECT_EQ(driver.retryLimit, 4);
    EXPECT_EQ(driver.mergeGap, 5);
    EXPECT_EQ(driver.pieceWordLimit, 5);
    EXPECT_EQ(driver.pieceBitLimit, 40);
}

TEST_F(Identity, EachPartOfThePropertyTextIsANumberOrZero)
{
    const struct {
        const char* property;
        int tag, cacheOnly, field3, retries, gap, bits;
    } rows[] = {
        {"7##3#4#9", 7, 0, 3, 4, 9, 72}, // an empty part stays a part
        {"####", 0, 0, 0, 0, 0, 0},
        {"1#2#3#4#5#6#7", 1, 2, 3, 4, 5, 40}, // what follows the fifth is ignored
        {"1#2#3#4#5#", 1, 2, 3, 4, 5, 40},
        {"a#1x#0x10#1.5#10", 0, 0, 0, 0, 10, 80},
        {"-1#-2#-3#-4#-5", -1, -2, -3, -4, -5, -40},
        {"99999999999#1#2#3#4", 0, 1, 2, 3, 4, 32}, // no 32-bit number
        {"2147483647#-2147483648#0#0#2147483647", INT_MAX, INT_MIN, 0, 0, INT_MAX, -8},
        {"010#0#0#3#08", 10, 0, 0, 3, 8, 64}, // decimal, whatever the leading zero
        {"1#2#3#4#\xB2", 1, 2, 3, 4, 0, 0},   // a superscript two is no digit
        {"1#2#3#4#5\xA0", 1, 2, 3, 4, 5, 40}, // Latin-1: a no-break space is a blank
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.property);
        initialise("91#92#93#94#95");
        initialise(row.property);
        EXPECT_EQ(driver.callBackTag, row.tag);
        EXPECT_EQ(driver.writeToCacheOnly, row.cacheOnly);
        EXPECT_EQ(driver.propertyField3, row.field3);
        EXPECT_EQ(driver.retryLimit, row.retries);
        EXPECT_EQ(driver.mergeGap, row.gap);
        EXPECT_EQ(driver.pieceWordLimit, row.gap);
        EXPECT_EQ(driver.pieceBitLimit, row.bits);
    }
}

TEST_F(Identity, FewerThanFivePartsKeepTheFieldsButEmptyTheLists)
{
    const char* const shortTexts[] = {"1#2#3#4", "", "1", "###", "1,2,3,4,5", nullptr};
    for (const char* shortText : shortTexts) {
        SCOPED_TRACE(shortText == nullptr ? "null" : shortText);
        initialise("11#0#13#14#15");
        driver.readList.append(request("R_W", 1, 1));
        driver.writeList.append(request("R_W", 2, 1));
        driver.conditionList.append(request("R_W", 3, 1));
        driver.dataAreas.append(_DATA_());
        driver.sendList.append(FRAME_PRO());
        driver.pieceWordLimit = 0;
        driver.pieceBitLimit = 0;

        initialise(shortText);
        EXPECT_EQ(driver.callBackTag, 11);
        EXPECT_EQ(driver.writeToCacheOnly, 0);
        EXPECT_EQ(driver.propertyField3, 13);
        EXPECT_EQ(driver.retryLimit, 14);
        EXPECT_EQ(driver.mergeGap, 15);
        EXPECT_EQ(driver.pieceWordLimit, 15);
        EXPECT_EQ(driver.pieceBitLimit, 120);
        EXPECT_TRUE(driver.readList.isEmpty());
        EXPECT_TRUE(driver.writeList.isEmpty());
        EXPECT_TRUE(driver.conditionList.isEmpty());
        EXPECT_TRUE(driver.dataAreas.isEmpty());
        EXPECT_TRUE(driver.sendList.isEmpty());
    }
}

TEST_F(Identity, PropertyTextOfAMillionCharactersIsTaken)
{
    const QByteArray hashes(1000000, '#');
    initialise(hashes.constData());
    EXPECT_EQ(driver.mergeGap, 0);
    const QByteArray digits = "1#2#3#4#" + QByteArray(1000000, '9');
    initialise(digits.constData());
    EXPECT_EQ(driver.callBackTag, 1);
    EXPECT_EQ(driver.mergeGap, 0);
}

TEST_F(Identity, HostResourcesAreKeptAsHandedIn)
{
    EXPECT_EQ(intf_initProperty(hostBlock.data(), -5, recipeBuffer.data(), nullptr, "1#0#0#3#10",
                                &hostMutex),
              1);
    EXPECT_EQ(driver.hostBlock, hostBlock.data());
    EXPECT_EQ(driver.hostArg2, -5);
    EXPECT_EQ(driver.recipeBuffer, recipeBuffer.data());
    EXPECT_EQ(driver.hostMutex, &hostMutex);
    initialise("1#0#0#3#10");
    EXPECT_EQ(driver.hostBlock, nullptr);
    EXPECT_EQ(driver.hostArg2, 0);
    EXPECT_EQ(driver.recipeBuffer, nullptr);
    EXPECT_EQ(driver.hostMutex, nullptr);
}

TEST_F(Identity, TagOfThePropertyTextComesBackWithEveryNotice)
{
    configure("42#0#0#3#10");
    plan({key("R_W", 10, 1)});
    write("R_W", 10, 1, "34 12");
    EXPECT_EQ(notices(), (Notices{{42, 1, "R_W", 10}}));
}

} // namespace
