// Address series for copies of one item.
#ifndef DOV417MODBUS_MULTIPLE_COPY_H
#define DOV417MODBUS_MULTIPLE_COPY_H

#include <QString>
#include <QVector>

int multiCp(QString regName, QString format, int start, int count, int step,
            QVector<QString>& texts, QVector<int>& addresses, int highest, QString highestText);

// -1 and -2 stand for one 16-bit unit and one 32-bit value; anything else below 1 is 1.
int resolveStep(int step, int unitBits);

#endif
