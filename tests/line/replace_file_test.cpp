#include "line/replace_file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dov417 {

namespace {

class AFileThatIsReplaced : public ::testing::Test {
protected:
    QString inFolder(const char* name) const
    {
        return folder.filePath(QLatin1String(name));
    }
    static QByteArray contentOf(const QString& fileName)
    {
        QFile file(fileName);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    QTemporaryDir folder;
    QString error;
};

TEST_F(AFileThatIsReplaced, HoldsWhatIsNewAndNothingElse)
{
    const QString name = inFolder("values.json");
    EXPECT_TRUE(mayReplaceFile(name, &error));
    for (const char* content : {"the first, which is longer", "the second"}) {
        ASSERT_TRUE(replaceFile(name, content, &error)) << error.toStdString();
        EXPECT_EQ(contentOf(name), content);
    }
    EXPECT_TRUE(mayReplaceFile(name, &error));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    EXPECT_EQ(error, "");
}

TEST_F(AFileThatIsReplaced, IsWrittenToWhereItIsAPipe)
{
    const QString name = inFolder("pipe");
    ASSERT_EQ(mkfifo(name.toLocal8Bit().constData(), 0600), 0);
    const int reader = open(name.toLocal8Bit().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    EXPECT_TRUE(mayReplaceFile(name, &error));
    EXPECT_TRUE(replaceFile(name, "values", &error)) << error.toStdString();
    char came[7] = "";
    EXPECT_EQ(read(reader, came, sizeof came), 6);
    EXPECT_STREQ(came, "values");
    close(reader);
}

TEST_F(AFileThatIsReplaced, IsNoFolderAndNotInAFolderThatIsMissing)
{
    EXPECT_FALSE(mayReplaceFile(folder.path(), &error));
    EXPECT_EQ(error, folder.path() + QStringLiteral(": nothing can be written there"));
    EXPECT_FALSE(replaceFile(folder.path(), "lost", &error));
    const QString nowhere = inFolder("no/such/folder/values.json");
    EXPECT_FALSE(mayReplaceFile(nowhere, &error));
    EXPECT_EQ(error, nowhere + QStringLiteral(": nothing can be written into its folder"));
    EXPECT_FALSE(replaceFile(nowhere, "lost", &error));
}

} // namespace

} // namespace dov417
