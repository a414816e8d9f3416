#include "identity.h"

#include <QStringList>

#include "cache/unit_index.h"
#include "driver_lock.h"
#include "intf.h"
#include "protocol/address_text.h"
#include "protocol/init_order.h"
#include "protocol/wrap.h"

DOV417_BEFORE_DRIVER const QString PROCOTOL_NAME = QString::fromLatin1("dov417modbus");
DOV417_BEFORE_DRIVER const QString PROCOTOL_VERSION = QString::fromLatin1(DOV417_VERSION);
DOV417_BEFORE_DRIVER const QString PROCOTOL_DEFALT_COM_PAR = QString::fromLatin1("38400,8,EVEN,1");
DOV417_BEFORE_DRIVER const QString PROCOTOL_DEFALT_IP_PAR =
    QString::fromLatin1("192.168.1.10,8000");
DOV417_BEFORE_DRIVER const QString PROCOTOL_PAR_HMI_SET_MODE = QString::fromLatin1("0_0");

QString intf_getVersion()
{
    const DriverCall call;
    return PROCOTOL_VERSION;
}

void intf_getProtocolType(int* type)
{
    const DriverCall call;
    if (type != 0) {
        *type = 0;
    }
}

void intf_getDriverParameter(QString& parameter)
{
    const DriverCall call;
    const QString separator = QString::fromLatin1(",");
    parameter = QString::fromLatin1("%1,%2,%3,%4,%5,%6,%7")
                    .arg(0)
                    .arg(PROCOTOL_DEFALT_COM_PAR)
                    .arg(0)
                    .arg(1)
                    .arg(PROCOTOL_DEFALT_IP_PAR)
                    .arg(PROCOTOL_NAME)
                    .arg(driver.regNames.join(separator));
}

void intf_getDriverPropertyPage(QString& page)
{
    const DriverCall call;
    page = PROCOTOL_PAR_HMI_SET_MODE;
}

void intf_SetDriverPropertyPage(const QString& page)
{
    const DriverCall call;
    driver.propertyPage = page;
}

void intf_setAddrValueChangeCallBack(VALUE_CHANGE_CALLBACK callBack)
{
    const DriverCall call;
    driver.valueChangeCallBack = callBack;
}

// One part of the property text; 0 for one that is no number.
static int settingOf(const QString& part)
{
    bool ok = false;
    return numberOf(part, ok, 10);
}

int intf_initProperty(unsigned char* hostBlock, int hostArg2, unsigned short* recipeBuffer,
                      int* result, const char* property, QMutex* hostMutex)
{
    const DriverCall call;
    if (result != 0) {
        *result = 0;
    }
    const QStringList parts = QString::fromLatin1(property).split(QLatin1Char('#'));
    if (parts.size() >= 5) {
        driver.callBackTag = settingOf(parts.at(0));
        driver.writeToCacheOnly = settingOf(parts.at(1));
        driver.propertyField3 = settingOf(parts.at(2));
        driver.retryLimit = settingOf(parts.at(3));
        driver.mergeGap = settingOf(parts.at(4));
    }
    driver.hostBlock = hostBlock;
    driver.hostArg2 = hostArg2;
    driver.recipeBuffer = recipeBuffer;
    driver.hostMutex = hostMutex;

    driver.readList.clear();
    driver.writeList.clear();
    driver.conditionList.clear();
    driver.dataAreas.clear();
    forgetUnits();

    driver.sendKind = 0;
    driver.burstCount = 0;
    driver.handshakeRequest = 0;
    driver.retryCount = 0;
    driver.pieceWordLimit = driver.mergeGap;
    driver.pieceBitLimit = wrapMul(driver.mergeGap, 8);
    driver.commFailed = 0;
    driver.sendList.clear();
    driver.frameIndex = 0;
    driver.initDone = 1;
    ++driver.sendTurn;
    ++driver.resets;
    return 1;
}
