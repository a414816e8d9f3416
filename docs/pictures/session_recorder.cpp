#include "session_recorder.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTemporaryDir>
#include <QTimer>

#include "panel/desk/line_thread.h"
#include "simulator/faults.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds length{92000};
constexpr milliseconds reportPause{1000};
constexpr int silentStation = 3;
constexpr int controllerTakesMs = 30;
constexpr int timeoutMs = 200;
const char* const wire = "9600,8,EVEN,1";

// What is done to the line, and when.
constexpr milliseconds cablePulled{17000};
constexpr milliseconds cablePlugged{20000};
constexpr milliseconds faultsBegin{40000};
constexpr milliseconds stationFallsSilent{26000};
const std::vector<std::string> faults = {"flip=3%", "silence=2%", "exception=0.5%"};

struct WriteToCome {
    milliseconds at;
    const char* name;
    const char* text;
};
const WriteToCome writesToCome[] = {
    {milliseconds(5000), "oven.wanted", "72.5"}, {milliseconds(6000), "fan.wanted", "40"},
    {milliseconds(7000), "pump.wanted", "12.5"}, {milliseconds(9000), "batch.wanted", "48000"},
    {milliseconds(12000), "valve[2]", "1"},      {milliseconds(13000), "valve[5]", "1"},
    {milliseconds(70000), "pump.wanted", "20"},  {milliseconds(80000), "belt.speed.wanted", "125"},
    {milliseconds(90000), "fan.wanted", "45"},
};

class SessionRecorder : public QObject {
public:
    SessionRecorder(const Library& library, const PanelTags& tags)
        : tags_(tags), simulation_(options()), thread_(library)
    {
        connect(&thread_, &LineThread::batchCame, this,
                [this](const LineBatch& batch) { keep(batch); });
        connect(&reportTimer_, &QTimer::timeout, this, [this]() { isReportDue_ = true; });
    }

    RecordedSession run()
    {
        simulation_.start();
        connect(&simulation_.line(), &simulator::LineServer::served, this,
                [this](const simulator::Answer& answer) { chooseFaults(answer.station); });
        LineSetup setup;
        setup.port = simulation_.portName();
        setup.line = wire;
        setup.timeoutMs = timeoutMs;
        began_ = Clock::now();
        session_.timeOfDay = QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toStdString();
        thread_.open(setup, watchedAddresses(tags_.items));
        thread_.setUnlocked(true);
        reportTimer_.start(reportPause);
        after(cablePulled, [this]() { plug(false); });
        after(cablePlugged, [this]() { plug(true); });
        after(faultsBegin, [this]() { conditions_.faults = faults; });
        after(stationFallsSilent, [this]() { isStationSilent_ = true; });
        for (const WriteToCome& write : writesToCome)
            after(write.at, [this, &write]() { this->write(write); });
        after(length, []() { QCoreApplication::quit(); });
        QCoreApplication::exec();
        thread_.end();
        return session_;
    }

private:
    simulator::SimulationOptions options()
    {
        simulator::SimulationOptions options;
        options.stations = {1, 2, silentStation};
        options.baudLimit = true;
        options.line = parseRtuFormat(wire);
        options.responseTimeMs = controllerTakesMs;
        options.link = folder_.filePath("controller").toStdString();
        conditions_.responseTimeMs = controllerTakesMs;
        return options;
    }

    template <typename Call>
    void after(milliseconds time, Call call)
    {
        QTimer::singleShot(time, Qt::PreciseTimer, this, call);
    }

    void plug(bool isPlugged)
    {
        conditions_.isPlugged = isPlugged;
        simulation_.setConditions(conditions_);
    }

    // Before the reply to this station suffers.
    void chooseFaults(int station)
    {
        std::vector<std::string> wanted = conditions_.faults;
        if (isStationSilent_ && station == silentStation)
            wanted = {"silence=100%"};
        if (wanted == rules_)
            return;
        rules_ = wanted;
        std::vector<simulator::FaultRule> rules;
        for (const std::string& text : wanted)
            rules.push_back(simulator::parseFaultRule(text));
        simulation_.faults().setRules(rules);
    }

    void write(const WriteToCome& write)
    {
        for (const PanelValue& value : tags_.values)
            if (value.label.name == write.name) {
                thread_.write(value.address, bytesToWrite(value, write.text));
                session_.writes.push_back({relative(Clock::now()), write.name, write.text});
            }
    }

    Clock::time_point relative(Clock::time_point time) const
    {
        return time == Clock::time_point() ? time : RecordedSession::begin + (time - began_);
    }

    std::string withoutFolder(const std::string& text) const
    {
        return QString::fromStdString(text).remove(folder_.path() + '/').toStdString();
    }

    void keep(LineBatch batch)
    {
        if (session_.batches.empty() && batch.state.phase == LinePhase::closed)
            return; // what there was before is no part of it
        batch.made = relative(batch.made);
        for (View& view : batch.values) {
            view.lastGood = relative(view.lastGood);
            view.lastChange = relative(view.lastChange);
        }
        for (Passed& passed : batch.passed) {
            Transmission& frame = passed.transmission;
            for (Clock::time_point* const time :
                 {&passed.at, &passed.stray.at, &frame.sendBegin, &frame.sendEnd, &frame.asOf,
                  &frame.reception.firstByte, &frame.reception.lastByte})
                *time = relative(*time);
            passed.text = withoutFolder(passed.text);
        }
        // The port's name says nothing to anybody: it is the simulated controller's.
        batch.state.isSimulated = true;
        for (std::string* const text : {&batch.state.port, &batch.state.reason})
            *text = withoutFolder(*text);
        if (batch.statistics) {
            LinkStatistics statistics = *batch.statistics;
            statistics.started = relative(statistics.started);
            batch.statistics = std::make_shared<const LinkStatistics>(statistics);
        }
        if (isReportDue_) {
            isReportDue_ = false;
            ControllerReport report;
            report.conditions = conditions_;
            report.counts = simulation_.faultCounts();
            batch.controller = std::make_shared<const ControllerReport>(report);
        }
        session_.batches.push_back(batch);
    }

    const PanelTags& tags_;
    QTemporaryDir folder_;
    simulator::Conditions conditions_;
    std::vector<std::string> rules_;
    bool isStationSilent_ = false;
    bool isReportDue_ = false;
    Clock::time_point began_{};
    QTimer reportTimer_;
    RecordedSession session_;
    simulator::Simulation simulation_;
    LineThread thread_;
};

} // namespace

RecordedSession recordSession(const Library& library, const PanelTags& tags)
{
    return SessionRecorder(library, tags).run();
}

} // namespace dov417
