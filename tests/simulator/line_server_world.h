// A controller on a line, and everything that happens there.
#ifndef DOV417_TESTS_SIMULATOR_LINE_SERVER_WORLD_H
#define DOV417_TESTS_SIMULATOR_LINE_SERVER_WORLD_H

#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "simulator/line_server.h"
#include "support.h"

namespace dov417::simulator {

inline const char* const readRequest = "01 03 05 0A 00 01 A4 C4";
inline const char* const readReply = "01 03 02 12 34 B5 33";
inline const char* const writeRequest = "01 06 05 0B 00 07 B9 06";
inline const char* const broadcast = "00 06 05 0C 00 07 09 16";

class LineServerTest : public testing::Test {
protected:
    LineServerTest()
    {
        memory.station(1)->setWord(Area::R, 10, 0x1234);
    }

    void start(const char* fault = nullptr)
    {
        if (fault)
            faults = Faults({parseFaultRule(fault)});
        server = std::make_unique<LineServer>(controller, faults, options);
        QObject::connect(server.get(), &LineServer::logged, server.get(),
                         [this](const LineEvent& event) { events.push_back(event); });
        ASSERT_EQ(complaint([this]() { server->open(); }), "");
    }

    std::size_t countOf(LineEvent::Kind kind) const
    {
        std::size_t count = 0;
        for (const LineEvent& event : events)
            count += event.kind == kind ? 1U : 0U;
        return count;
    }
    bool waitForEvents(LineEvent::Kind kind, std::size_t count)
    {
        return waitFor([&]() { return countOf(kind) >= count; });
    }
    bool waitForNotice(const char* text)
    {
        return waitFor([&]() {
            for (const LineEvent& event : events) {
                if (event.kind == LineEvent::notice && event.meaning == text)
                    return true;
            }
            return false;
        });
    }

    std::string inFolder(const char* name) const
    {
        return folder.filePath(QLatin1String(name)).toStdString();
    }

    QFileInfo linkInFolder(const char* name) const
    {
        return QFileInfo(folder.filePath(QLatin1String(name)));
    }

    QTemporaryDir folder;
    Memory memory{{1}};
    Controller controller{memory};
    Faults faults;
    LineServerOptions options;
    std::vector<LineEvent> events;
    std::unique_ptr<LineServer> server;
};

} // namespace dov417::simulator

#endif
