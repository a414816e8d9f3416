#include "panel/desk/write_failure.h"

#include <QCoreApplication>

namespace dov417 {

namespace {

struct WriteFailureTexts {
    Q_DECLARE_TR_FUNCTIONS(WriteFailureTexts)
};

} // namespace

Failure cannotWrite(const QString& file, const QString& why)
{
    const QString text = why.isEmpty()
                             ? WriteFailureTexts::tr("cannot write %1").arg(file)
                             : WriteFailureTexts::tr("cannot write %1: %2").arg(file, why);
    return Failure(text.toStdString());
}

} // namespace dov417
