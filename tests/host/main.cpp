// Tests of the line need an event loop.
#include <QCoreApplication>
#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
