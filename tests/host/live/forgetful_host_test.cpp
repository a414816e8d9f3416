#include "forgetful_host.h"

#include <QCoreApplication>
#include <QProcess>
#include <cstdio>
#include <cstring>
#include <gmock/gmock.h>

#include "line/failure.h"
#include "live/child_process.h"

namespace dov417 {

namespace {

constexpr const char* forgetfulTask = "forgetful";

} // namespace

bool isForgetfulHost(int argc, char** argv)
{
    return argc >= 3 && std::strcmp(argv[2], forgetfulTask) == 0;
}

int runForgetfulHost(int argc, char** argv)
{
    constexpr int enough = 5; // if nothing else stops them
    constexpr const char* generation = "DOV417_FORGETFUL_GENERATION";
    const int number = qEnvironmentVariableIntValue(generation) + 1;
    qputenv(generation, QByteArray::number(number));
    const QCoreApplication application(argc, argv);
    if (number == enough)
        return 1;
    try {
        ChildProcess child;
        child.begin(forgetfulTask, "");
        return child.waitForEnd() + 1; // so many of them were there
    } catch (const Failure& failure) {
        std::fputs(failure.what(), stderr);
        return 1;
    }
}

namespace {

TEST(AForgetfulHost, StartsNoChildrenWithoutEnd)
{
    QProcess host;
    host.start(QCoreApplication::applicationFilePath(), {"started", forgetfulTask});
    ASSERT_TRUE(host.waitForFinished(-1));
    EXPECT_EQ(host.exitCode(), 2) << "itself and one child";
    EXPECT_THAT(host.readAllStandardError().toStdString(), testing::HasSubstr("runAsChild()"));
}

} // namespace

} // namespace dov417
