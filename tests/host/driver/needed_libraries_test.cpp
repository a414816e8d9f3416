#include "driver/needed_libraries.h"

#include <QTemporaryDir>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>

namespace dov417 {

namespace {

using ::testing::Contains;
using ::testing::IsEmpty;

std::string bytesOf(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TEST(NeededLibraries, AreThoseThatTheFileNames)
{
    EXPECT_THAT(neededLibraries(DOV417_LIBRARY), Contains("libc.so.6"));
    EXPECT_EQ(qtGeneration(neededLibraries(DOV417_LIBRARY)), QT_VERSION_MAJOR);
}

TEST(NeededLibraries, AreNoneOfAFileThatIsNoLibrary)
{
    EXPECT_THAT(neededLibraries("/no/such/file"), IsEmpty());
    EXPECT_THAT(neededLibraries("/"), IsEmpty());
    EXPECT_THAT(neededLibraries("/dev/null"), IsEmpty());
    EXPECT_THAT(neededLibraries(__FILE__), IsEmpty());
}

// Whatever is broken off or turned over, nothing is read that is not there: the sanitizers watch.
TEST(NeededLibraries, OfABrokenFileAreReadWithinItsBytes)
{
    const std::string whole = bytesOf(DOV417_OTHER_QT_LIBRARY);
    ASSERT_GT(whole.size(), 4096U);
    const QTemporaryDir folder;
    const std::string file = folder.filePath(QStringLiteral("broken.so")).toStdString();
    const auto neededBy = [&file](const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
        return neededLibraries(file);
    };
    ASSERT_EQ(neededBy(whole), neededLibraries(DOV417_OTHER_QT_LIBRARY));
    ASSERT_NE(qtGeneration(neededBy(whole)), 0);
    for (std::size_t length = 0; length < 1024; length += 7)
        EXPECT_THAT(neededBy(whole.substr(0, length)), IsEmpty()) << length;
    for (std::size_t at = 0; at < whole.size(); at += at < 1024 ? 3 : 97) {
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 0xFF);
        EXPECT_LT(neededBy(changed).size(), 10000U) << at;
    }
}

TEST(QtGeneration, IsThatOfItsCoreLibrary)
{
    EXPECT_EQ(qtGeneration({"libc.so.6", "libQt5Core.so.5"}), 5);
    EXPECT_EQ(qtGeneration({"libQt6Core.so.6"}), 6);
    EXPECT_EQ(qtGeneration({"libQtCore.so.4", "libstdc++.so.6"}), 4);
    EXPECT_EQ(qtGeneration({"libQt5SerialPort.so.5", "libMyQt5Core.so.5"}), 0);
    EXPECT_EQ(qtGeneration({}), 0);
}

} // namespace

} // namespace dov417
