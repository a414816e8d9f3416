// The ports of this computer on the first page, and a port that another program holds.
#include "panel/start_page.h"

#include <QToolButton>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class TheStartPage : public ProjectWorld {
protected:
    TheStartPage()
        : page(window.findChild<StartPage*>()), ports(page->findChild<QTreeWidget*>("ports"))
    {
    }
    std::vector<std::string> row(int place) const
    {
        std::vector<std::string> texts;
        for (int column = 0; column < ports->columnCount(); ++column)
            texts.push_back(ports->topLevelItem(place)->text(column).toStdString());
        return texts;
    }
    QLineEdit* port() const
    {
        return page->findChild<QLineEdit*>("port");
    }
    std::string sentence() const
    {
        return window.findChild<QLabel*>("lineSentence")->text().toStdString();
    }

    StartPage* page;
    QTreeWidget* ports;
};

TEST_F(TheStartPage, ListsPortsByNameAndAdapterWithWhoUsesThemAndWhetherOneMay)
{
    page->showPorts({{"/dev/ttyUSB0", "FTDI USB-RS485 Cable", "ftdi_sio", {}, true, "dialout"},
                     {"/dev/ttyUSB1",
                      "CP2102 USB to UART",
                      "cp210x",
                      {{1417, "minicom"}, {1500, "picocom"}},
                      true,
                      "dialout"},
                     {"/dev/ttyS0", "built in", "serial8250", {}, false, "dialout"},
                     {"/dev/ttyS1", "built in", "serial8250", {}, false, ""}});
    ASSERT_EQ(ports->topLevelItemCount(), 4);
    EXPECT_THAT(row(0), ElementsAre("/dev/ttyUSB0", "FTDI USB-RS485 Cable", "", "yes"));
    EXPECT_THAT(row(1),
                ElementsAre("/dev/ttyUSB1", "CP2102 USB to UART", "minicom, picocom", "yes"));
    EXPECT_THAT(row(2), ElementsAre("/dev/ttyS0", "built in", "", "no, but group dialout may"));
    EXPECT_THAT(row(3), ElementsAre("/dev/ttyS1", "built in", "", "no"));
}

TEST_F(TheStartPage, OpensThePortThatIsChosenInItsListWithKeys)
{
    options.set = {"R_W:100=7"};
    controller = std::make_unique<ControllerProcess>(options);
    watch({"R_W:100"});
    page->showPorts({{"/dev/there-is-none", "none", "", {}, true, ""},
                     {controller->port(), "a controller", "", {}, true, ""}});
    ports->setFocus();
    QTest::keyClick(ports, Qt::Key_Space);
    EXPECT_EQ(port()->text(), "/dev/there-is-none");
    QTest::keyClick(ports, Qt::Key_Down);
    EXPECT_EQ(port()->text().toStdString(), controller->port());
    QTest::keyClick(ports, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); })) << sentence();
    EXPECT_EQ(desk.state().port, controller->port());
    EXPECT_EQ(desk.book().find(desk.tags().values.front().address)->value.front(), 7);
    EXPECT_FALSE(desk.state().isUnlocked);
}

TEST_F(TheStartPage, OpensTheOnlyPortWithTheEnterKeyAlone)
{
    controller = std::make_unique<ControllerProcess>(options);
    watch({"R_W:100"});
    page->showPorts({{controller->port(), "a controller", "", {}, true, ""}});
    ports->setFocus(Qt::TabFocusReason);
    QTest::keyClick(ports, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); })) << sentence();
}

TEST_F(TheStartPage, ListsThePortsAgainWhenItIsShownAndWhenOneIsRefused)
{
    std::vector<PortEntry> now = {{"/dev/there-is-none", "none", "", {}, true, ""}};
    page->listPortsBy([&now]() { return now; });
    QTest::mouseClick(ports->viewport(), Qt::LeftButton, Qt::NoModifier,
                      ports->visualItemRect(ports->topLevelItem(0)).center());
    EXPECT_EQ(port()->text(), "/dev/there-is-none");
    port()->selectAll();
    QTest::keyClicks(port(), "/dev/there-is-none-either");
    window.showPage(1);
    now.insert(now.begin(), {"/dev/another", "just plugged in", "", {}, true, ""});
    EXPECT_EQ(ports->topLevelItemCount(), 1);
    window.showPage(0);
    ASSERT_EQ(ports->topLevelItemCount(), 2);
    EXPECT_EQ(row(0).at(1), "just plugged in");
    EXPECT_TRUE(ports->topLevelItem(1)->isSelected());
    EXPECT_FALSE(ports->topLevelItem(0)->isSelected());
    EXPECT_EQ(port()->text(), "/dev/there-is-none-either") << "typed meanwhile";
    now.front().users = {{1417, "minicom"}};
    EXPECT_EQ(row(0).at(2), "");
    QTest::keyClick(port(), Qt::Key_Return);
    window.showPage(0);
    ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::refused; }));
    EXPECT_EQ(row(0).at(2), "minicom");
    now.clear();
    window.showPage(1);
    window.showPage(0);
    EXPECT_EQ(row(0).at(1), "This computer has no serial port");
}

TEST_F(TheStartPage, SaysWhereThereIsNoPort)
{
    page->showPorts({});
    ASSERT_EQ(ports->topLevelItemCount(), 1);
    EXPECT_EQ(row(0).at(1), "This computer has no serial port");
    ports->setFocus();
    QTest::keyClick(ports, Qt::Key_Home);
    QTest::keyClick(ports, Qt::Key_Return);
    EXPECT_EQ(desk.state().phase, LinePhase::closed) << "that is no port";
    EXPECT_EQ(port()->text(), QString());
}

// Whoever holds it has neither exclusive access nor a lock file, but a lock on the port.
TEST_F(TheStartPage, SaysThatAnotherProgramHoldsThePortAndOpensItOnceItIsFree)
{
    controller = std::make_unique<ControllerProcess>(options);
    watch({"R_W:100"});
    const int other = ::open(controller->port().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    QTest::keyClicks(port(), QString::fromStdString(controller->port()));
    QTest::keyClick(port(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::refused; }));
    EXPECT_THAT(sentence(), StartsWith("The line could not be opened: "));
    EXPECT_THAT(sentence(), HasSubstr(controller->port()));
    EXPECT_THAT(sentence(), HasSubstr("is busy: another program uses it"));
    EXPECT_THAT(sentence(), HasSubstr("lists who uses each port"));
    EXPECT_TRUE(allAre(ValueState::neverRead));
    EXPECT_FALSE(window.findChild<QToolButton*>("lock")->isVisible());
    ::close(other);
    window.showPage(0);
    QTest::keyClick(port(), Qt::Key_Return);
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); })) << sentence();
}

} // namespace

} // namespace dov417
