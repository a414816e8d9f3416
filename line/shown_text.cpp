#include "line/shown_text.h"

#include <QString>

namespace dov417 {

std::string shownText(const std::string& text)
{
    QString shown = QString::fromStdString(text);
    for (QChar& character : shown)
        if (character.category() == QChar::Other_Control || // C0, DEL and C1
            character.category() == QChar::Separator_Line ||
            character.category() == QChar::Separator_Paragraph)
            character = QLatin1Char('?');
    return shown.toStdString();
}

bool isShownAsItIs(const std::string& text)
{
    return shownText(text) == text;
}

} // namespace dov417
