#include "panel/pictures.h"

#include <QApplication>
#include <QDir>
#include <QPalette>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>

#include "line/failure.h"
#include "panel/desk/write_failure.h"

namespace dov417 {

QPalette darkPalette()
{
    const QColor ground(0x2B, 0x2B, 0x2B);
    const QColor ink(0xEE, 0xEE, 0xEE);
    QPalette palette(ground);
    palette.setColor(QPalette::Base, QColor(0x20, 0x20, 0x20));
    palette.setColor(QPalette::AlternateBase, QColor(0x2A, 0x2A, 0x2A));
    palette.setColor(QPalette::Highlight, QColor(0x35, 0x6A, 0xA0));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText,
          QPalette::ToolTipText})
        palette.setColor(role, ink);
    palette.setColor(QPalette::PlaceholderText, QColor(0x9A, 0x9A, 0x9A));
    palette.setColor(QPalette::ToolTipBase, ground);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x8A, 0x8A, 0x8A));
    return palette;
}

namespace {

// So that its rows say what became of them. Without a file there is nothing that this replaces.
void fillRecipe(const PanelPage& page)
{
    auto* const upload = page.findChild<QPushButton*>(QStringLiteral("upload"));
    const auto* const progress = page.findChild<QProgressBar*>(QStringLiteral("recipeProgress"));
    if (!upload || !upload->isEnabled() || !page.settings().empty())
        return;
    upload->click();
    while (!progress->isHidden())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace

void takePictures(MainWindow& window, const QString& folder, bool isOfTrial)
{
    const QPalette before = QApplication::palette();
    QDir().mkpath(folder);
    int page = 0;
    for (const PanelPage* const each : window.pages()) {
        window.showPage(page++);
        if (isOfTrial)
            fillRecipe(*each);
        for (const bool isDark : {false, true}) {
            QApplication::setPalette(isDark ? darkPalette() : before);
            QApplication::processEvents();
            while (each->isBusy())
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
            QApplication::processEvents();
            const QString file =
                QStringLiteral("%1/%2-%3.png")
                    .arg(folder, each->title().toLower(),
                         isDark ? QStringLiteral("dark") : QStringLiteral("light"));
            if (!window.grab().save(file))
                throw cannotWrite(file, QString());
        }
    }
    QApplication::setPalette(before);
}

} // namespace dov417
