// Who the driver is, and how the host configures it.
#ifndef DOV417MODBUS_IDENTITY_H
#define DOV417MODBUS_IDENTITY_H

#include <QString>

extern const QString PROCOTOL_NAME;
extern const QString PROCOTOL_VERSION;
extern const QString PROCOTOL_DEFALT_COM_PAR;
extern const QString PROCOTOL_DEFALT_IP_PAR;
extern const QString PROCOTOL_PAR_HMI_SET_MODE;

#endif
