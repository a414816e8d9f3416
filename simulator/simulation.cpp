#include "simulator/simulation.h"

#include <algorithm>
#include <cstdio>

#include "line/replace_file.h"
#include "simulator/set_load.h"

namespace dov417::simulator {

namespace {

constexpr int plantPeriodMs = 100;
// A machine that slept does not have to catch up on all of it.
constexpr qint64 longestPlantStepMs = 60000;

LineServerOptions lineOptions(const SimulationOptions& options)
{
    LineServerOptions line;
    line.device = QString::fromStdString(options.device);
    line.link = QString::fromStdString(options.link);
    line.line = options.line;
    line.paced = options.baudLimit;
    line.turnaroundMs = options.turnaroundMs;
    return line;
}

bool isWrite(int function)
{
    return function == 5 || function == 6 || function == 15 || function == 16;
}

} // namespace

Simulation::Simulation(const SimulationOptions& options, QObject* parent)
    : QObject(parent), options_(options), memory_(options.stations),
      controller_(memory_, options.strict ? Limits::strict() : Limits()),
      plant_(memory_, options.followInputs, options.seed), plantTimer_(this)
{
    connect(&plantTimer_, &QTimer::timeout, this, &Simulation::letPlantLive);
}

Simulation::~Simulation()
{
    stop();
}

bool Simulation::start(QString* error)
{
    if (!prepare(error))
        return false;
    line_ = std::make_unique<LineServer>(controller_, faults_, lineOptions(options_));
    if (log_.isOpen())
        connect(line_.get(), &LineServer::logged, this, &Simulation::log);
    if (options_.holdWritten)
        connect(line_.get(), &LineServer::served, this, &Simulation::holdWritten);
    if (!line_->open(error))
        return false;
    started_ = true;
    plant_.freeze(options_.frozen);
    plantClock_.start();
    plantTimer_.start(plantPeriodMs);
    return true;
}

// Everything that can be wrong with the options, before there is a line.
bool Simulation::prepare(QString* error)
{
    if (memory_.stations().size() != options_.stations.size() || options_.stations.empty()) {
        if (error)
            *error = QStringLiteral("stations are different numbers from 1 to 247");
        return false;
    }
    std::vector<FaultRule> rules;
    for (const std::string& text : options_.faults) {
        const std::optional<FaultRule> rule = parseFaultRule(QString::fromStdString(text), error);
        if (!rule)
            return false;
        rules.push_back(*rule);
    }
    faults_ = Faults(rules, options_.seed);

    if (!options_.loadFile.empty() &&
        !loadValues(memory_, QString::fromStdString(options_.loadFile), error))
        return false;
    for (const std::string& text : options_.set) {
        AddressRange where;
        if (!setValues(memory_, QString::fromStdString(text), error, &where))
            return false;
        if (options_.holdWritten)
            plant_.hold(where.station, where.area, where.firstWord(), where.lastWord());
    }
    for (const std::string& text : options_.hold) {
        const std::optional<AddressRange> range =
            parseAddressRange(QString::fromStdString(text), error);
        if (!range)
            return false;
        plant_.hold(range->station, range->area, range->firstWord(), range->lastWord());
    }

    if (!options_.dumpFile.empty() &&
        !mayReplaceFile(QString::fromStdString(options_.dumpFile), error))
        return false;
    if (options_.logFile == "-") {
        log_.open(stdout, QIODevice::WriteOnly);
    } else if (!options_.logFile.empty()) {
        log_.setFileName(QString::fromStdString(options_.logFile));
        if (!log_.open(QIODevice::WriteOnly)) {
            if (error)
                *error = QStringLiteral("%1: %2").arg(log_.fileName(), log_.errorString());
            return false;
        }
    }
    return true;
}

bool Simulation::stop(QString* error)
{
    if (!started_)
        return true;
    started_ = false;
    plantTimer_.stop();
    line_->close();
    log_.close();
    return options_.dumpFile.empty() ||
           dumpValues(memory_, QString::fromStdString(options_.dumpFile), error);
}

void Simulation::letPlantLive()
{
    plant_.advance(static_cast<int>(std::min(plantClock_.restart(), longestPlantStepMs)));
}

// Who writes a value wants to find it again.
void Simulation::holdWritten(const Answer& answer)
{
    if (!isWrite(answer.function) || answer.exception != 0 ||
        (answer.outcome != Outcome::answered && answer.outcome != Outcome::broadcast))
        return;
    const bool coils = answer.function == 5 || answer.function == 15;
    for (const AreaLayout& layout : areaLayouts()) {
        if (layout.coils != coils)
            continue;
        const int unitsPerWord = coils ? 16 : 1;
        const int first = answer.address - layout.base;
        const int last = first + answer.count - 1;
        if (last >= 0 && first < layout.words * unitsPerWord) // hold() cuts off what is beyond
            plant_.hold(answer.station, layout.area, std::max(first, 0) / unitsPerWord,
                        last / unitsPerWord);
    }
}

void Simulation::log(const LineEvent& event)
{
    log_.write(logText(event).toUtf8() + '\n');
    log_.flush();
}

QString Simulation::portName() const
{
    return line_ ? line_->portName() : QString();
}

QString Simulation::report() const
{
    const LineServerCounters line = line_ ? line_->counters() : LineServerCounters();
    const ControllerCounters& controller = controller_.counters();
    return QStringLiteral("requests %1, of these answered %2, refused %3, broadcast %4, "
                          "for other stations %5\n"
                          "writes executed %6, bytes that were no frame %7 times\n"
                          "bytes received %8, sent %9\n")
               .arg(line.requests)
               .arg(controller.answered)
               .arg(controller.refused)
               .arg(controller.broadcasts)
               .arg(controller.otherStation)
               .arg(controller.writes)
               .arg(line.dropped)
               .arg(line.bytesReceived)
               .arg(line.bytesSent) +
           QStringLiteral("faults in %1 of %2 replies: %3")
               .arg(faults_.faulty())
               .arg(faults_.replies())
               .arg(faults_.report());
}

Memory& Simulation::memory()
{
    return memory_;
}

Controller& Simulation::controller()
{
    return controller_;
}

Faults& Simulation::faults()
{
    return faults_;
}

Plant& Simulation::plant()
{
    return plant_;
}

LineServer& Simulation::line()
{
    return *line_;
}

} // namespace dov417::simulator
