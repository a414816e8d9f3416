// These tests have windows, and start child processes of their own program.
#include <QApplication>
#include <clocale>
#include <gmock/gmock.h>

#include "live/child_program.h"

int main(int argc, char** argv)
{
    if (const std::optional<int> code = dov417::runAsChild(argc, argv))
        return *code;
    qputenv("QT_QPA_PLATFORM", "offscreen"); // windows without a screen
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
