// These tests have windows, and start child processes of their own program.
#include <QApplication>
#include <QTemporaryDir>
#include <clocale>
#include <gmock/gmock.h>

#include "live/child_program.h"

int main(int argc, char** argv)
{
    if (const std::optional<int> code = dov417::runAsChild(argc, argv))
        return *code;
    qputenv("QT_QPA_PLATFORM", "offscreen"); // windows without a screen
    const QTemporaryDir home;                // nothing of the user's is read or written
    qputenv("XDG_DATA_HOME", home.filePath("data").toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", home.filePath("config").toLocal8Bit());
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
