// One value, two values: what the texts of the program, which are English, leave open.
#ifndef DOV417_PANEL_ENGLISH_PLURALS_H
#define DOV417_PANEL_ENGLISH_PLURALS_H

#include <QTranslator>

namespace dov417 {

// Beneath the translation into any other language: "%n value(s)" becomes "%n value" or "%n values".
class EnglishPlurals : public QTranslator {
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    bool isEmpty() const override;
    QString translate(const char* context, const char* source, const char* remark,
                      int number) const override;
};

} // namespace dov417

#endif
