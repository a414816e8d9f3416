#include "panel/english_plurals.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

namespace dov417 {
namespace {

struct PluralTexts {
    Q_DECLARE_TR_FUNCTIONS(PluralTexts)
};

TEST(EnglishPlurals, AreThoseOfTheNumber)
{
    EnglishPlurals plurals;
    QCoreApplication::installTranslator(&plurals);
    EXPECT_EQ(PluralTexts::tr("%n value(s)", nullptr, 1), "1 value");
    EXPECT_EQ(PluralTexts::tr("%n value(s) of %1", nullptr, 2).arg(3), "2 values of 3");
    EXPECT_EQ(PluralTexts::tr("%n value(s)", nullptr, 0), "0 values");
    EXPECT_EQ(PluralTexts::tr("a file(s) name"), "a file(s) name");
    QCoreApplication::removeTranslator(&plurals);
}

} // namespace
} // namespace dov417
