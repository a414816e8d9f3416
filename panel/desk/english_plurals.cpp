#include "panel/desk/english_plurals.h"

#include <array>

namespace dov417 {

namespace {

struct PluralForm {
    const char* source;
    const char* one;
    const char* many;
};
// In this order: a verb goes with what was counted.
constexpr std::array<PluralForm, 7> pluralForms = {
    {{"(s) are ", " is ", "s are "},
     {"(s) were ", " was ", "s were "},
     {"(s) read back", " reads back", "s read back"},
     {"So are %n more", "So is %n more", ""},
     {" more have ", " more has ", ""},
     {"(s) of the same name are", " of the same name is", "s of the same name are"},
     {"(s)", "", "s"}}};

} // namespace

QString EnglishPlurals::translate(const char* /*context*/, const char* text,
                                  const char* /*disambiguation*/, int number) const
{
    if (number < 0)
        return QString(); // nothing is counted: the text as it stands
    QString words = QString::fromUtf8(text);
    for (const PluralForm& form : pluralForms) {
        const char* wanted = number == 1 ? form.one : form.many;
        if (number == 1 || *wanted != '\0')
            words.replace(QLatin1String(form.source), QLatin1String(wanted));
    }
    return words;
}

bool EnglishPlurals::isEmpty() const
{
    return false;
}

} // namespace dov417
