#include "panel/english_plurals.h"

namespace dov417 {

bool EnglishPlurals::isEmpty() const
{
    return false;
}

QString EnglishPlurals::translate(const char*, const char* source, const char*, int number) const
{
    if (number < 0)
        return QString(); // the source's own
    return QString::fromUtf8(source).replace(QLatin1String("(s)"),
                                             number == 1 ? QString() : QStringLiteral("s"));
}

} // namespace dov417
