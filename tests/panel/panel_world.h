// A desk with a line to a controller of the test's own, whose memory is looked at in the end.
#ifndef DOV417_TESTS_PANEL_WORLD_H
#define DOV417_TESTS_PANEL_WORLD_H

#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <csignal>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "live/controller_process.h"
#include "loaded_library.h"
#include "panel/desk/panel_desk.h"
#include "pty_slave.h"

namespace dov417 {

// Of the platform without a screen.
inline void withoutPlatformWords(QtMsgType type, const QMessageLogContext& context,
                                 const QString& message)
{
    if (!message.startsWith("This plugin does not support"))
        withoutDebugLines(type, context, message);
}

// What a column of a table shows, row by row.
inline std::vector<std::string> shownIn(const QTableView& table, int column)
{
    std::vector<std::string> texts;
    for (int row = 0; row < table.model()->rowCount(); ++row)
        texts.push_back(table.model()->index(row, column).data().toString().toStdString());
    return texts;
}

class PanelWorld : public LoadedLibrary {
protected:
    PanelWorld()
    {
        qInstallMessageHandler(withoutPlatformWords);
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
        options.frozen = true;
        options.dumpFile = folder.filePath("dump").toStdString();
    }

    void watch(const std::vector<std::string>& texts)
    {
        std::vector<Item> items;
        for (const std::string& text : texts)
            items.push_back(Items(library, ItemSource()).find(text, Access::read));
        desk.setItems(items);
    }
    // Returns once each value was read.
    void open()
    {
        controller = std::make_unique<ControllerProcess>(options);
        setup.port = controller->port();
        desk.open(setup);
        ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    }
    void unlock()
    {
        desk.setUnlocked(true);
        ASSERT_TRUE(waitUntil([this]() { return desk.state().isUnlocked; }));
    }
    bool allAre(ValueState state) const
    {
        for (const PanelValue& value : desk.tags().values)
            if (desk.book().standing(value.address).state != state)
                return false;
        return true;
    }
    bool allWritesHaveEnded() const
    {
        return desk.writesUnderWay() == 0;
    }
    // It is there and says nothing.
    void stopController(bool isStopped) const
    {
        kill(static_cast<pid_t>(controller->processId()), isStopped ? SIGSTOP : SIGCONT);
    }
    // What the controller of station 1 held when it was ended; 0 where its dump has nothing.
    int held(const std::string& area, int word)
    {
        desk.end();
        controller.reset();
        std::ifstream file(options.dumpFile);
        const nlohmann::json dump = nlohmann::json::parse(file);
        const auto words = dump.at("1").value(area, nlohmann::json::object());
        for (const auto& [first, values] : words.items())
            if (word >= std::stoi(first) &&
                word < std::stoi(first) + static_cast<int>(values.size()))
                return values.at(static_cast<std::size_t>(word - std::stoi(first))).get<int>();
        return 0;
    }

    QTemporaryDir folder;
    simulator::SimulationOptions options;
    LineSetup setup;
    std::unique_ptr<ControllerProcess> controller;
    PanelDesk desk{library};
};

} // namespace dov417

#endif
