#include "panel/desk/help_boxes.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

namespace dov417 {

namespace {

struct PageKeys {
    const char* keys;
    const char* what;
};

const PageKeys pageKeys[] = {
    {"Ctrl+F", QT_TRANSLATE_NOOP("HelpTexts", "show only some rows")},
    {"Ctrl+V", QT_TRANSLATE_NOOP("HelpTexts", "add what was copied from a spreadsheet")},
    {"F2", QT_TRANSLATE_NOOP("HelpTexts", "write the value in place; Enter sends it")},
    {"Menu", QT_TRANSLATE_NOOP("HelpTexts", "what a row's menu has: write, format, order")},
    {"Space", QT_TRANSLATE_NOOP("HelpTexts", "write the other state of a lamp")},
    {"Alt", QT_TRANSLATE_NOOP("HelpTexts", "with an underlined letter: what has it")},
};

struct HelpTexts {
    Q_DECLARE_TR_FUNCTIONS(HelpTexts)
};

QString rowOf(const QString& keys, const QString& what)
{
    return QStringLiteral("<tr><td><b>%1</b>&nbsp;&nbsp;</td><td>%2</td></tr>")
        .arg(keys.toHtmlEscaped(), what.toHtmlEscaped());
}

QString withoutMnemonic(QString text)
{
    text.replace(QStringLiteral("&&"), QStringLiteral("\n"));
    text.remove(QLatin1Char('&'));
    return text.replace(QLatin1Char('\n'), QLatin1Char('&'));
}

} // namespace

void showKeys(QMainWindow& window)
{
    QString rows;
    for (const QAction* const menu : window.menuBar()->actions())
        for (const QAction* const action : menu->menu()->actions())
            if (!action->shortcut().isEmpty())
                rows += rowOf(action->shortcut().toString(QKeySequence::NativeText),
                              withoutMnemonic(action->text()));
    for (const PageKeys& each : pageKeys)
        rows += rowOf(QLatin1String(each.keys), HelpTexts::tr(each.what));
    QMessageBox box(QMessageBox::NoIcon, HelpTexts::tr("Keys"),
                    QStringLiteral("<table>%1</table>").arg(rows), QMessageBox::Close, &window);
    box.exec();
}

void showAbout(QMainWindow& window, const Library& library)
{
    QMessageBox::about(&window, HelpTexts::tr("About this program"),
                       HelpTexts::tr("dov417 panel %1\n\nThe driver in use is version %2:\n%3")
                           .arg(QStringLiteral(DOV417_VERSION), library.intf_getVersion(),
                                QString::fromStdString(library.path())));
}

} // namespace dov417
