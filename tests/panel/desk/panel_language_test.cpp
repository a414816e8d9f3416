#include "panel/desk/panel_language.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>

#include "panel/desk/english_plurals.h"
#include "panel/desk/write_failure.h"

namespace dov417 {

namespace {

// How Qt finds a text in a .qm file.
quint32 hashOf(const QByteArray& source)
{
    quint32 hash = 0;
    for (const char each : source) {
        hash = (hash << 4) + static_cast<unsigned char>(each);
        hash ^= (hash & 0xF0000000) >> 24;
        hash &= 0x0FFFFFFF;
    }
    return std::max<quint32>(hash, 1);
}

// A .qm file of one text, as Qt's lrelease makes them.
void writeTranslation(const QString& file, const QByteArray& context, const QByteArray& source,
                      const QString& translated)
{
    enum : quint8 {
        hashes = 0x42,
        messages = 0x69,
        end = 1,
        translation = 3,
        sourceText = 6,
        contextText = 7
    };
    QByteArray message;
    QDataStream words(&message, QIODevice::WriteOnly);
    words << quint8(translation) << translated; // its length in bytes, and UTF-16
    const auto put = [&words](quint8 tag, const QByteArray& text) {
        words << tag << static_cast<quint32>(text.size());
        words.writeRawData(text.constData(), text.size());
    };
    put(sourceText, source);
    put(contextText, context);
    words << quint8(end);
    QFile opened(file);
    ASSERT_TRUE(opened.open(QIODevice::WriteOnly));
    opened.write(QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd"));
    QDataStream all(&opened);
    all << quint8(hashes) << quint32(8) << hashOf(source) << quint32(0) << quint8(messages)
        << static_cast<quint32>(message.size());
    all.writeRawData(message.constData(), message.size());
}

QString refusal()
{
    return QString::fromUtf8(cannotWrite(QStringLiteral("a"), QString()).what());
}

TEST(PanelLanguage, IsTheUsersWhereSomebodyHasTranslatedIt)
{
    EnglishPlurals plurals; // as in the program
    QCoreApplication::installTranslator(&plurals);
    const QTemporaryDir empty;
    const QTemporaryDir folder;
    writeTranslation(folder.filePath("dov417-panel_de.qm"), "WriteFailureTexts", "cannot write %1",
                     QStringLiteral("%1 l\u00e4sst sich nicht schreiben"));
    EXPECT_EQ(refusal(), "cannot write a");
    {
        const QStringList folders = {empty.path(), folder.path()};
        const PanelLanguage austrian(QLocale(QLocale::German, QLocale::Austria), folders);
        EXPECT_EQ(refusal(), QString::fromUtf8("a l\u00e4sst sich nicht schreiben"));
        EXPECT_EQ(QCoreApplication::translate("Elsewhere", "cannot write %1"), "cannot write %1");
        EXPECT_EQ(QCoreApplication::translate("Elsewhere", "%n value(s)", nullptr, 1), "1 value");
    }
    EXPECT_EQ(refusal(), "cannot write a");
    const PanelLanguage french(QLocale(QLocale::French), {empty.path(), folder.path()});
    EXPECT_EQ(refusal(), "cannot write a");
}

TEST(PanelLanguage, IsLookedForInTheUsersOwnDataFirst)
{
    const QTemporaryDir data;
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    const QString own = data.filePath("dov417-panel/translations");
    ASSERT_TRUE(QDir().mkpath(own));
    EXPECT_EQ(languageFolders().front(), own);
    EXPECT_TRUE(languageFolders().back().endsWith("../share/dov417-panel/translations"));
    qputenv("XDG_DATA_HOME", before);
}

} // namespace

} // namespace dov417
