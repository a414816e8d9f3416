// These tests start child processes of their own program.
#include <QCoreApplication>
#include <gmock/gmock.h>

#include "forgetful_host.h"
#include "live/child_program.h"

int main(int argc, char** argv)
{
    if (dov417::isForgetfulHost(argc, argv))
        return dov417::runForgetfulHost(argc, argv);
    if (const std::optional<int> code = dov417::runAsChild(argc, argv))
        return *code;
    QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
