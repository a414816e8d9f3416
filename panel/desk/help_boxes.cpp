#include "panel/desk/help_boxes.h"

#include <QAction>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include "panel/desk/dialog_size.h"

namespace dov417 {

namespace {

struct PageKeys {
    const char* keys; // null: a heading
    const char* what;
};

const PageKeys pageKeys[] = {
    {nullptr, QT_TRANSLATE_NOOP("HelpTexts", "Pages and tables")},
    {"Ctrl+F", QT_TRANSLATE_NOOP("HelpTexts", "show only some rows")},
    {"Ctrl+V", QT_TRANSLATE_NOOP("HelpTexts", "add what was copied from a spreadsheet")},
    {"F2", QT_TRANSLATE_NOOP("HelpTexts", "write the value in place; Enter sends it")},
    {"Menu", QT_TRANSLATE_NOOP("HelpTexts", "what a row's menu has: write, format, order")},
    {"Space", QT_TRANSLATE_NOOP("HelpTexts", "write the other state of a lamp")},
    {"Alt", QT_TRANSLATE_NOOP("HelpTexts", "with an underlined letter: what has it")},
    {"Ctrl+Shift+\u2190 \u2192", QT_TRANSLATE_NOOP("HelpTexts", "the column narrower, wider")},
    {"Shift+Alt+\u2190 \u2192 \u2191 \u2193",
     QT_TRANSLATE_NOOP("HelpTexts", "move what parts the page")},
};

const PageKeys drawingKeys[] = {
    {nullptr, QT_TRANSLATE_NOOP("HelpTexts", "Trends")},
    {"Space, End", QT_TRANSLATE_NOOP("HelpTexts", "stand still or run; run")},
    {"\u2190 \u2192, PgUp, PgDown", QT_TRANSLATE_NOOP("HelpTexts", "earlier, later")},
    {"+ \u2212", QT_TRANSLATE_NOOP("HelpTexts", "closer, farther")},
    {"Ctrl+\u2191 \u2193", QT_TRANSLATE_NOOP("HelpTexts", "height: closer, farther")},
    {"Shift+\u2191 \u2193", QT_TRANSLATE_NOOP("HelpTexts", "height: up, down")},
    {"Home", QT_TRANSLATE_NOOP("HelpTexts", "all there is")},
    {"Backspace", QT_TRANSLATE_NOOP("HelpTexts", "as it was before the zoom")},
    {"0", QT_TRANSLATE_NOOP("HelpTexts", "scales follow the values again")},
    {"A, B", QT_TRANSLATE_NOOP("HelpTexts", "cursors")},
    {"Shift+\u2190 \u2192", QT_TRANSLATE_NOOP("HelpTexts", "the last cursor; with Ctrl faster")},
    {"N", QT_TRANSLATE_NOOP("HelpTexts", "a note at cursor A, else now")},
    {"Esc", QT_TRANSLATE_NOOP("HelpTexts", "cursors away")},
    {nullptr, QT_TRANSLATE_NOOP("HelpTexts", "Time on the wire")},
    {"\u2190 \u2192", QT_TRANSLATE_NOOP("HelpTexts", "from frame to frame")},
    {"Shift+\u2190 \u2192, PgUp, PgDown", QT_TRANSLATE_NOOP("HelpTexts", "to and fro")},
    {"Home", QT_TRANSLATE_NOOP("HelpTexts", "to the oldest")},
    {"+ \u2212", QT_TRANSLATE_NOOP("HelpTexts", "closer, farther")},
    {"0", QT_TRANSLATE_NOOP("HelpTexts", "all that is kept")},
    {"A, B", QT_TRANSLATE_NOOP("HelpTexts", "rulers, at the next edge of the frame")},
    {"Enter", QT_TRANSLATE_NOOP("HelpTexts", "that frame on the page of the line")},
    {"Space, End", QT_TRANSLATE_NOOP("HelpTexts", "follow the line again")},
    {"Esc", QT_TRANSLATE_NOOP("HelpTexts", "rulers away")},
};

struct HelpTexts {
    Q_DECLARE_TR_FUNCTIONS(HelpTexts)
};

QString rowOf(const QString& keys, const QString& what)
{
    return QStringLiteral("<tr><td><b>%1</b>&nbsp;&nbsp;</td><td>%2</td></tr>")
        .arg(keys.toHtmlEscaped(), what.toHtmlEscaped());
}

template <std::size_t Count>
QString rowsOf(const PageKeys (&all)[Count])
{
    QString rows;
    for (const PageKeys& each : all)
        rows += each.keys ? rowOf(QString::fromUtf8(each.keys), HelpTexts::tr(each.what))
                          : QStringLiteral("<tr><td><i>%1</i></td></tr>")
                                .arg(HelpTexts::tr(each.what).toHtmlEscaped());
    return rows;
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
    rows += rowsOf(pageKeys);
    QDialog box(&window);
    box.setWindowTitle(HelpTexts::tr("Keys"));
    auto* const columns = new QWidget;
    auto* const row = new QHBoxLayout(columns);
    for (const QString& each : {rows, rowsOf(drawingKeys)}) {
        auto* const keys = new QLabel(QStringLiteral("<table>%1</table>").arg(each));
        row->addWidget(keys, 0, Qt::AlignTop);
    }
    auto* const area = new QScrollArea; // for large letters
    area->setFrameShape(QFrame::NoFrame);
    area->setWidget(columns);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
    auto* const all = new QVBoxLayout(&box);
    all->addWidget(area, 1);
    all->addWidget(buttons);
    const int bar = area->verticalScrollBar()->sizeHint().width();
    resizeWithin(box, columns->sizeHint() + QSize(3 * bar, 6 * bar));
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
