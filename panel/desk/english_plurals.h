// One value, two values: the texts of the program say "%n value(s)", for translators to make plural
// forms of. English is what is shown without a translation, and has its own.
#ifndef DOV417_PANEL_ENGLISH_PLURALS_H
#define DOV417_PANEL_ENGLISH_PLURALS_H

#include <QTranslator>

namespace dov417 {

class EnglishPlurals : public QTranslator {
public:
    using QTranslator::QTranslator;

    QString translate(const char* context, const char* text, const char* disambiguation,
                      int number) const override;
    bool isEmpty() const override;
};

} // namespace dov417

#endif
