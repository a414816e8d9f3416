#include "link/port.h"

#include "line/failure.h"

namespace dov417 {

bool Port::opens()
{
    QString reason;
    const Opening opening = open(&reason);
    if (opening == Opening::refused)
        throw Failure(reason.toStdString());
    return opening == Opening::done;
}

} // namespace dov417
