// The pictures of docs/panel.md, from a recorded session: the same bytes each time, as long as the
// fonts and Qt are the same.
//
//     panel_pictures FOLDER [WIDTHxHEIGHT [light|dark|manual]]
//     panel_pictures --record              makes the session anew, which takes as long as the
//     session
#include <QApplication>
#include <QSettings>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "live/child_program.h"
#include "page_pictures.h"
#include "panel/desk/english_plurals.h"
#include "session_recorder.h"

using namespace dov417;

namespace {

constexpr int usageCode = 2;
const char* const fontFamily = "DejaVu Sans"; // Debian: fonts-dejavu-core
constexpr int fontPoints = 10;

// Without those of the platform without a screen, and those of the driver for debugging.
void sayWarnings(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtDebugMsg && !message.startsWith(QLatin1String("This plugin does not support")))
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

std::string fileOf(const char* name)
{
    return std::string(DOV417_PICTURES) + "/" + name;
}

PanelTags machineTags(const Library& library)
{
    ItemSource source;
    source.tags = fileOf("machine.csv");
    return panelTags(library, Items(library, source).tagged(Access::read));
}

std::vector<Address> valuesOf(const PanelTags& tags)
{
    std::vector<Address> values;
    for (const PanelValue& value : tags.values)
        values.push_back(value.address);
    return values;
}

void record()
{
    const Library library(DOV417_LIBRARY);
    const PanelTags tags = machineTags(library);
    const RecordedSession session = recordSession(library, tags);
    saveSession(fileOf("session.jsonl"), session, valuesOf(tags));
}

// As on every computer, and not as on this one.
void dressUp()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(QApplication::style()->standardPalette());
    const QFont font(QString::fromLatin1(fontFamily), fontPoints);
    if (QFontInfo(font).family() != QLatin1String(fontFamily))
        throw Failure(std::string("there is no font ") + fontFamily +
                      " here (Debian: fonts-dejavu-core)");
    QApplication::setFont(font);
    QApplication::setCursorFlashTime(0);
}

void take(const PictureSettings& settings)
{
    dressUp();
    // What was opened on this computer is nobody's business.
    const QTemporaryDir own;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, own.path());
    const Library library(DOV417_LIBRARY);
    PanelDesk desk(library, PanelDesk::Source::recording);
    const PanelTags tags = machineTags(library);
    const RecordedSession session = loadSession(fileOf("session.jsonl"), valuesOf(tags));
    SessionPlayer player(desk, session);
    {
        MainWindow window(desk);
        window.resize(settings.size);
        LineSetup setup;
        setup.line = "9600,8,EVEN,1";
        window.document().begin(tags.items, setup);
        window.show();
        takePagePictures(window, player, settings);
        window.actions().dropUnsaved();
    }
    desk.end();
}

PictureSettings settingsOf(const QStringList& words)
{
    PictureSettings settings;
    settings.folder = words.value(0);
    const QStringList sides = words.value(1, QStringLiteral("1280x800")).split(QLatin1Char('x'));
    settings.size = QSize(sides.value(0).toInt(), sides.value(1).toInt());
    const QString which = words.value(2);
    settings.isLight = which != QLatin1String("dark");
    settings.isDark = which.isEmpty() || which == QLatin1String("dark");
    settings.isManual = which == QLatin1String("manual");
    if (settings.folder.isEmpty() || settings.size.isEmpty())
        throw UsageFailure(
            "usage: panel_pictures FOLDER [WIDTHxHEIGHT [light|dark|manual]], or --record");
    return settings;
}

} // namespace

int main(int argc, char** argv)
{
    if (const std::optional<int> code = runAsChild(argc, argv))
        return *code;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", "UTC");
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling);
    qInstallMessageHandler(sayWarnings);
    const QApplication application(argc, argv);
    EnglishPlurals plurals;
    QCoreApplication::installTranslator(&plurals);
    QLocale::setDefault(QLocale::c());
    std::setlocale(LC_ALL, "C");
    try {
        const QStringList words = QApplication::arguments().mid(1);
        if (words == QStringList(QStringLiteral("--record")))
            record();
        else
            take(settingsOf(words));
    } catch (const UsageFailure& failure) {
        std::fprintf(stderr, "panel_pictures: %s\n", failure.what());
        return usageCode;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "panel_pictures: %s\n", failure.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
