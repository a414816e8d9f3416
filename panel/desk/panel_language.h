// The panel's texts in the user's language, where somebody has translated them.
#ifndef DOV417_PANEL_PANEL_LANGUAGE_H
#define DOV417_PANEL_PANEL_LANGUAGE_H

#include <QLocale>
#include <QStringList>
#include <QTranslator>

namespace dov417 {

// dov417-panel_de.qm, from the first of these folders that has one; with Qt's own texts, those of
// its dialogs. English where there is none. For as long as it is there.
class PanelLanguage {
public:
    PanelLanguage(const QLocale& locale, const QStringList& folders);
    ~PanelLanguage();
    PanelLanguage(const PanelLanguage&) = delete;
    PanelLanguage& operator=(const PanelLanguage&) = delete;

private:
    QTranslator own_;
    QTranslator qts_;
};

// The user's own, those of the system, and the one beside the program.
QStringList languageFolders();

} // namespace dov417

#endif
