#include "panel/project/unsaved_work.h"

#include <QDir>
#include <QProcess>
#include <QTreeWidget>
#include <csignal>
#include <sys/types.h>

#include "made_views.h"
#include "panel/project/recovery_dialog.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char* const machine = R"({"version": 1, "tags": [
  {"name": "oven", "register": "R_W", "address": 5}]})";

class UnsavedProject : public ProjectWorld {
protected:
    ~UnsavedProject() override
    {
        for (const auto& panel : panels)
            end(*panel);
    }

    // The panel as a person starts it, with something in it that is not saved.
    QProcess& start(const QString& file, const char* address)
    {
        const QStringList before = copies();
        QProcess& panel = run({file, QLatin1String(address)});
        EXPECT_TRUE(waitUntil([&]() { return copies().size() > before.size(); }))
            << panel.readAllStandardError().toStdString();
        return panel;
    }
    QProcess& run(const QStringList& arguments)
    {
        panels.push_back(std::make_unique<QProcess>());
        QProcess& panel = *panels.back();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XDG_CONFIG_HOME", path("other-config"));
        environment.insert("XDG_DATA_HOME", path("data"));
        panel.setProcessEnvironment(environment);
        panel.start(QStringLiteral(DOV417_PANEL),
                    QStringList{"--library", DOV417_LIBRARY} + arguments);
        EXPECT_TRUE(panel.waitForStarted());
        return panel;
    }
    static void end(QProcess& panel)
    {
        if (panel.state() == QProcess::NotRunning)
            return;
        kill(static_cast<pid_t>(panel.processId()), SIGKILL);
        EXPECT_TRUE(panel.waitForFinished());
    }
    QStringList copies() const
    {
        QStringList names;
        for (const QString& place : {folder.path(), path("data/dov417/unsaved")})
            for (const QString& name : QDir(place).entryList(
                     {".*.unsaved-????????"}, QDir::Files | QDir::Hidden, QDir::Name))
                names.append(name);
        return names;
    }
    void takeUp(const char* difference)
    {
        whenAsked<RecoveryDialog>(&window, [difference](RecoveryDialog& dialog) {
            auto* const table = dialog.findChild<QTreeWidget*>("unsaved");
            ASSERT_GE(table->topLevelItemCount(), 1);
            EXPECT_THAT(table->topLevelItem(0)->text(3).toStdString(), HasSubstr(difference));
            EXPECT_THAT(table->topLevelItem(0)->text(2).toStdString(), HasSubstr("older, of "));
            QTest::mouseClick(dialog.findChild<QPushButton*>("takeUp"), Qt::LeftButton);
        });
    }

    std::vector<std::unique_ptr<QProcess>> panels;
};

TEST_F(UnsavedProject, OutlivesThePanelThatIsKilledAndIsTakenUpByTheNext)
{
    const QString file = written("machine.json", machine);
    end(start(file, "R_W:77"));
    EXPECT_EQ(textOf(file), machine);
    takeUp("1 value(s) more");
    ASSERT_TRUE(window.actions().open(file));
    EXPECT_THAT(shown(), ElementsAre("oven 1/R_W:5 unsigned", "1/R_W:77 1/R_W:77 unsigned"));
    EXPECT_TRUE(window.document().isModified());
    EXPECT_EQ(window.document().file(), file);
    EXPECT_EQ(textOf(file), machine);
    EXPECT_EQ(copies().size(), 1) << "it is not saved yet";
    press("saveProject");
    EXPECT_THAT(textOf(file), HasSubstr("R_W.77"));
    EXPECT_TRUE(waitUntil([this]() { return copies().isEmpty(); }));
    ASSERT_TRUE(window.actions().open(file)) << "nothing is offered";
}

// What is offered is held by whoever looks at it. It is in a dialog, which nobody answers.
TEST_F(UnsavedProject, IsOfferedByTheNextPanelAsSoonAsThatStartsAndIsStillThereWhenItEnds)
{
    const QString file = written("machine.json", machine);
    end(start(file, "R_W:77"));
    ASSERT_EQ(findUnsaved(library, {file}).size(), 1U);
    const QString lock = folder.filePath(copies().front() + ".lock");
    for (const QStringList& arguments : {QStringList(), QStringList(file)}) {
        ASSERT_FALSE(QFile::exists(lock)) << "of the one that was killed";
        QProcess& next = run(arguments); // the project is one that was opened last
        EXPECT_TRUE(waitUntil([&]() { return QFile::exists(lock); }));
        EXPECT_THAT(findUnsaved(library, {file}), IsEmpty());
        next.terminate();
        EXPECT_TRUE(next.waitForFinished());
        EXPECT_EQ(next.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(next.exitCode(), 0) << next.readAllStandardError().toStdString();
        EXPECT_EQ(findUnsaved(library, {file}).size(), 1U);
    }
}

TEST_F(UnsavedProject, OfTwoPanelsWithOneFileIsKeptForEach)
{
    const QString file = written("machine.json", machine);
    QProcess& one = start(file, "R_W:77");
    QProcess& other = start(file, "R_W:88");
    EXPECT_EQ(copies().size(), 2);
    EXPECT_THAT(findUnsaved(library, {file}), IsEmpty()) << "both are at work";
    end(one);
    {
        const std::vector<UnsavedCopy> found = findUnsaved(library, {file});
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found.front().read.content.items->back().address, registerAt(77));
        EXPECT_THAT(findUnsaved(library, {file}), IsEmpty()) << "somebody looks at it";
    }
    end(other);
    const std::vector<UnsavedCopy> found = findUnsaved(library, {file});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.front().read.content.items->back().address, registerAt(88));
}

TEST_F(UnsavedProject, IsOfferedAgainUntilItIsSavedOrRemoved)
{
    const QString file = written("machine.json", machine);
    end(start(file, "R_W:77"));
    whenAsked<RecoveryDialog>(&window, [](RecoveryDialog& dialog) {
        QTest::mouseClick(dialog.findChild<QPushButton*>("later"), Qt::LeftButton);
    });
    ASSERT_TRUE(window.actions().open(file));
    EXPECT_EQ(shown().size(), 1U);
    EXPECT_EQ(copies().size(), 1);
    whenAsked<RecoveryDialog>(&window, [this](RecoveryDialog& dialog) {
        answerWith(&window, QMessageBox::Yes, "is lost then");
        QTest::mouseClick(dialog.findChild<QPushButton*>("removeUnsaved"), Qt::LeftButton);
    });
    ASSERT_TRUE(window.actions().open(file));
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(UnsavedProject, IsKeptWhenThePanelIsAskedToEndAndNotAsked)
{
    add("R_W:100");
    window.leave();
    EXPECT_FALSE(window.isVisible());
    ASSERT_EQ(copies().size(), 1);
    EXPECT_TRUE(copies().front().startsWith(".untitled.unsaved-"));
}

TEST_F(UnsavedProject, LeavesNothingBehindWhereItIsNotWanted)
{
    add("R_W:100");
    EXPECT_TRUE(waitUntil([this]() { return copies().size() == 1; }));
    press("undo");
    EXPECT_TRUE(waitUntil([this]() { return copies().isEmpty(); }));
    press("redo");
    EXPECT_TRUE(waitUntil([this]() { return copies().size() == 1; }));
    answerWith(&window, QMessageBox::Discard, "not saved");
    EXPECT_TRUE(window.close());
    EXPECT_TRUE(waitUntil([this]() { return copies().isEmpty(); }));
}

TEST_F(UnsavedProject, LiesInTheUsersFolderWhereItsOwnCannotBeWritten)
{
    const QString file = QStringLiteral("/proc/self/machine.json");
    ReadContent read;
    read.content.items = std::make_shared<const std::vector<Item>>(
        std::vector<Item>{Items(library, ItemSource()).find("R_W:9", Access::read)});
    window.document().takeUp(read, file);
    window.actions().keepUnsaved();
    EXPECT_TRUE(QDir(path("data/dov417/unsaved")).exists());
    EXPECT_THAT(textOf(path("data/dov417/unsaved/") + copies().front()),
                HasSubstr("\"unsavedOf\": \"/proc/self/machine.json\""));
}

TEST_F(UnsavedProject, MovesToTheUsersFolderWhereItsOwnCanBeWrittenNoMore)
{
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    add("R_W:100");
    window.actions().keepUnsaved();
    ASSERT_EQ(copies().size(), 1);
    const QString beside = folder.filePath(copies().front());
    ASSERT_TRUE(QFile::remove(beside));
    ASSERT_TRUE(QDir().mkdir(beside)); // so that no file can be written in its place
    add("R_W:101");
    window.actions().keepUnsaved();
    ASSERT_EQ(copies().size(), 1);
    EXPECT_THAT(textOf(path("data/dov417/unsaved/") + copies().front()), HasSubstr("R_W.101"));
}

TEST(ProjectDifferences, AreSaidInSentences)
{
    ProjectContent from;
    ProjectContent to;
    EXPECT_TRUE(differences(from, to).isEmpty());
    Item oven;
    oven.name = "oven";
    Item lamp;
    lamp.name = "lamp";
    from.items = std::make_shared<const std::vector<Item>>(std::vector<Item>{oven, lamp});
    to.items = std::make_shared<const std::vector<Item>>(std::vector<Item>{lamp, oven});
    EXPECT_EQ(differences(from, to).join(';').toStdString(), "the values stand in another order");
    oven.comment = "large";
    to.items = std::make_shared<const std::vector<Item>>(std::vector<Item>{oven});
    to.line.retries = 5;
    to.stations.emplace_back();
    to.pages["trends"] = {{"plots", 1}};
    EXPECT_EQ(differences(from, to).join(';').toStdString(),
              "1 value(s) fewer;1 value(s) of the same name are different;of the line: retries;"
              "the stations;how a page is arranged: trends");
}

} // namespace

} // namespace dov417
