// A program of one page on the session: it opens a line to a simulated controller of its own,
// watches a few values, writes one, and prints what it is told.
//
//     session_host [LIBRARY]
#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "line/failure.h"
#include "live/child_program.h"
#include "live/live_line.h"
#include "session/session.h"
#include "text/values.h"

using namespace dov417;

namespace {

const char* qualityText(Quality quality)
{
    switch (quality) {
    case Quality::neverRead:
        return "never read";
    case Quality::good:
        return "good";
    case Quality::old:
        return "old";
    case Quality::beingWritten:
        return "being written";
    }
    return "";
}

void print(const Library& library, const ViewChanges& changes)
{
    for (const ViewChange& change : changes) {
        const View& view = change.view;
        const std::string value =
            view.hasValue ? valueTexts(view.address.width, Format(), view.value.data(), 1).front()
                          : "?";
        std::printf("%s = %s (%s)\n", toText(library, view.address).c_str(), value.c_str(),
                    qualityText(view.quality()));
    }
}

int run(const Library& library)
{
    LineSetup setup;
    setup.simulated = true; // or: setup.port = "/dev/ttyUSB0"
    const LiveLine line(library, setup, {1});
    Session session(library, sessionSettings(setup));

    QObject::connect(&session, &Session::changed, &session,
                     [&library](const ViewChanges& changes) { print(library, changes); });
    QObject::connect(&session, &Session::portChanged, &session,
                     [](bool, const std::string& message) { std::puts(message.c_str()); });

    const Result opened = session.open(line.settings());
    if (!opened.accepted)
        throw Failure(opened.reason);
    const Result watched =
        session.watch({parseAddress(library, "R_W:0..1"), parseAddress(library, "R_W:100")});
    if (!watched.accepted)
        throw Failure(watched.reason);

    // Once every value was read, or could not be: a write, and what became of it.
    const Write speed{parseAddress(library, "R_W:100"),
                      valueBytes(Width::word, Format(), {"1500"})};
    bool isTaken = false;
    const auto written = [&session, &isTaken](const Result& result) {
        isTaken = result.accepted;
        std::printf("write: %s\n", isTaken ? "taken" : result.reason.c_str());
        // The cycle under way may have read the value before it was written; the next one reads it
        // again.
        session.finishAfterCycles(2, &QCoreApplication::quit);
    };
    bool isAsked = false;
    QObject::connect(&session, &Session::cycleEnded, &session, [&]() {
        if (!std::exchange(isAsked, true))
            session.write(speed, written);
    });
    QCoreApplication::exec();
    return isTaken ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv)
{
    // The simulated controller is this program once more.
    if (const std::optional<int> code = runAsChild(argc, argv))
        return *code;
    const QCoreApplication application(argc, argv);
    // The driver tells its planning on the debug stream.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    try {
        return run(Library(argc > 1 ? argv[1] : ""));
    } catch (const Failure& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return EXIT_FAILURE;
    }
}
