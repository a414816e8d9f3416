#include "simulator/simulation.h"

#include <algorithm>
#include <cstdio>

#include "line/failure.h"
#include "line/replace_file.h"
#include "simulator/set_load.h"

namespace dov417::simulator {

namespace {

constexpr int plantPeriodMs = 100;
// A machine that slept does not have to catch up on all of it.
constexpr qint64 maxPlantStepMs = 60000;

LineServerOptions lineOptions(const SimulationOptions& options)
{
    LineServerOptions line;
    line.device = options.device;
    line.link = options.link;
    line.line = options.line;
    line.ownSpeedOnly = options.ownSpeedOnly;
    line.paced = options.baudLimit;
    line.responseTimeMs = options.responseTimeMs;
    return line;
}

std::vector<FaultRule> rulesOf(const std::vector<std::string>& texts)
{
    std::vector<FaultRule> rules;
    rules.reserve(texts.size());
    for (const std::string& text : texts)
        rules.push_back(parseFaultRule(text));
    return rules;
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
    try {
        stop();
    } catch (...) {
        // Who wants to hear of the dump calls stop().
    }
}

void Simulation::start()
{
    prepare();
    line_ = std::make_unique<LineServer>(controller_, faults_, lineOptions(options_));
    if (log_.isOpen())
        connect(line_.get(), &LineServer::logged, this, &Simulation::log);
    if (options_.holdWritten)
        connect(line_.get(), &LineServer::served, this, &Simulation::holdWritten);
    line_->open();
    started_ = true;
    plant_.freeze(options_.frozen);
    plantClock_.start();
    plantTimer_.start(plantPeriodMs);
}

// Everything that can be wrong with the options, before there is a line.
void Simulation::prepare()
{
    if (memory_.stations().size() != options_.stations.size() || options_.stations.empty())
        throw UsageFailure("stations are different numbers from 1 to 247");
    faults_ = Faults(rulesOf(options_.faults), options_.seed);
    conditions_.faults = options_.faults;
    conditions_.responseTimeMs = options_.responseTimeMs;

    if (!options_.loadFile.empty())
        loadValues(memory_, options_.loadFile);
    for (const std::string& text : options_.set) {
        const AddressRange where = setValues(memory_, text);
        if (options_.holdWritten)
            plant_.hold(where.station, where.area, where.firstWord(), where.lastWord());
    }
    for (const std::string& text : options_.hold) {
        const AddressRange range = parseAddressRange(text);
        plant_.hold(range.station, range.area, range.firstWord(), range.lastWord());
    }

    QString error;
    if (!options_.dumpFile.empty() &&
        !mayReplaceFile(QString::fromStdString(options_.dumpFile), &error))
        throw Failure(error.toStdString());
    if (options_.logFile == "-") {
        log_.open(stdout, QIODevice::WriteOnly);
    } else if (!options_.logFile.empty()) {
        log_.setFileName(QString::fromStdString(options_.logFile));
        if (!log_.open(QIODevice::WriteOnly))
            throw Failure(options_.logFile + ": " + log_.errorString().toStdString());
    }
}

void Simulation::stop()
{
    if (!started_)
        return;
    started_ = false;
    plantTimer_.stop();
    line_->close();
    log_.close();
    if (!options_.dumpFile.empty())
        dumpValues(memory_, options_.dumpFile);
}

void Simulation::setConditions(const Conditions& conditions)
{
    const std::vector<FaultRule> rules = rulesOf(conditions.faults);
    if (conditions.responseTimeMs < 0 || conditions.responseTimeMs > maxResponseTimeMs)
        throw UsageFailure("the controller takes 0 to " + std::to_string(maxResponseTimeMs) +
                           " ms before it answers");
    // A pseudo-terminal comes back with another number, and its old one may be another program's.
    if (!conditions.isPlugged && options_.device.empty() && options_.link.empty())
        throw UsageFailure("without a link nobody would find the port again");
    if (conditions.faults != conditions_.faults)
        faults_.setRules(rules);
    line_->setResponseTime(conditions.responseTimeMs);
    line_->setOn(conditions.isOn);
    const bool wasPlugged = conditions_.isPlugged;
    conditions_ = conditions;
    conditions_.isPlugged = wasPlugged;
    plug(conditions.isPlugged);
}

void Simulation::plug(bool isPlugged)
{
    if (!isPlugged)
        line_->close();
    else if (!line_->isOpen())
        line_->open();
    conditions_.isPlugged = isPlugged;
}

const Conditions& Simulation::conditions() const
{
    return conditions_;
}

FaultCounts Simulation::faultCounts() const
{
    FaultCounts counts;
    counts.replies = faults_.replies();
    counts.faulty = faults_.faulty();
    for (int kind = 0; kind < faultKindCount; ++kind)
        if (const std::uint64_t count = faults_.count(static_cast<FaultKind>(kind)); count > 0)
            counts.kinds[faultName(static_cast<FaultKind>(kind))] = count;
    return counts;
}

void Simulation::letPlantLive()
{
    plant_.advance(static_cast<int>(std::min(plantClock_.restart(), maxPlantStepMs)));
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
    const std::string text = logText(event) + "\n";
    log_.write(text.data(), static_cast<qint64>(text.size()));
    log_.flush();
}

std::string Simulation::portName() const
{
    return line_ ? line_->portName() : std::string();
}

std::string Simulation::report() const
{
    const LineServerCounters line = line_ ? line_->counters() : LineServerCounters();
    const ControllerCounters& controller = controller_.counters();
    const auto text = [](std::uint64_t count) { return std::to_string(count); };
    return "requests " + text(line.requests) + ", of these answered " + text(controller.answered) +
           ", refused " + text(controller.refused) + ", broadcast " + text(controller.broadcasts) +
           ", for other stations " + text(controller.otherStation) + "\nwrites executed " +
           text(controller.writes) + ", bytes that were no frame " + text(line.dropped) +
           " times\nbytes received " + text(line.bytesReceived) + ", sent " + text(line.bytesSent) +
           "\nfaults in " + text(faults_.faulty()) + " of " + text(faults_.replies()) +
           " replies: " + faults_.report();
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
