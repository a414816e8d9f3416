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
    : QObject(parent), m_options(options), m_memory(options.stations),
      m_controller(m_memory, options.strict ? Limits::strict() : Limits()),
      m_plant(m_memory, options.followInputs, options.seed), m_plantTimer(this)
{
    connect(&m_plantTimer, &QTimer::timeout, this, &Simulation::letPlantLive);
}

Simulation::~Simulation()
{
    stop();
}

bool Simulation::start(QString* error)
{
    if (!prepare(error))
        return false;
    m_line = std::make_unique<LineServer>(m_controller, m_faults, lineOptions(m_options));
    if (m_log.isOpen())
        connect(m_line.get(), &LineServer::logged, this, &Simulation::log);
    if (m_options.holdWritten)
        connect(m_line.get(), &LineServer::served, this, &Simulation::holdWritten);
    if (!m_line->open(error))
        return false;
    m_started = true;
    m_plant.freeze(m_options.frozen);
    m_plantClock.start();
    m_plantTimer.start(plantPeriodMs);
    return true;
}

// Everything that can be wrong with the options, before there is a line.
bool Simulation::prepare(QString* error)
{
    if (m_memory.stations().size() != m_options.stations.size() || m_options.stations.empty()) {
        if (error)
            *error = QStringLiteral("stations are different numbers from 1 to 247");
        return false;
    }
    std::vector<FaultRule> rules;
    for (const std::string& text : m_options.faults) {
        const std::optional<FaultRule> rule = parseFaultRule(QString::fromStdString(text), error);
        if (!rule)
            return false;
        rules.push_back(*rule);
    }
    m_faults = Faults(rules, m_options.seed);

    if (!m_options.loadFile.empty() &&
        !loadValues(m_memory, QString::fromStdString(m_options.loadFile), error))
        return false;
    for (const std::string& text : m_options.set) {
        AddressRange where;
        if (!setValues(m_memory, QString::fromStdString(text), error, &where))
            return false;
        if (m_options.holdWritten)
            m_plant.hold(where.station, where.area, where.firstWord(), where.lastWord());
    }
    for (const std::string& text : m_options.hold) {
        const std::optional<AddressRange> range =
            parseAddressRange(QString::fromStdString(text), error);
        if (!range)
            return false;
        m_plant.hold(range->station, range->area, range->firstWord(), range->lastWord());
    }

    if (!m_options.dumpFile.empty() &&
        !mayReplaceFile(QString::fromStdString(m_options.dumpFile), error))
        return false;
    if (m_options.logFile == "-") {
        m_log.open(stdout, QIODevice::WriteOnly);
    } else if (!m_options.logFile.empty()) {
        m_log.setFileName(QString::fromStdString(m_options.logFile));
        if (!m_log.open(QIODevice::WriteOnly)) {
            if (error)
                *error = QStringLiteral("%1: %2").arg(m_log.fileName(), m_log.errorString());
            return false;
        }
    }
    return true;
}

bool Simulation::stop(QString* error)
{
    if (!m_started)
        return true;
    m_started = false;
    m_plantTimer.stop();
    m_line->close();
    m_log.close();
    return m_options.dumpFile.empty() ||
           dumpValues(m_memory, QString::fromStdString(m_options.dumpFile), error);
}

void Simulation::letPlantLive()
{
    m_plant.advance(static_cast<int>(std::min(m_plantClock.restart(), longestPlantStepMs)));
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
            m_plant.hold(answer.station, layout.area, std::max(first, 0) / unitsPerWord,
                         last / unitsPerWord);
    }
}

void Simulation::log(const LineEvent& event)
{
    m_log.write(logText(event).toUtf8() + '\n');
    m_log.flush();
}

QString Simulation::portName() const
{
    return m_line ? m_line->portName() : QString();
}

QString Simulation::report() const
{
    const LineServerCounters line = m_line ? m_line->counters() : LineServerCounters();
    const ControllerCounters& controller = m_controller.counters();
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
               .arg(m_faults.faulty())
               .arg(m_faults.replies())
               .arg(m_faults.report());
}

Memory& Simulation::memory()
{
    return m_memory;
}

Controller& Simulation::controller()
{
    return m_controller;
}

Faults& Simulation::faults()
{
    return m_faults;
}

Plant& Simulation::plant()
{
    return m_plant;
}

LineServer& Simulation::line()
{
    return *m_line;
}

} // namespace dov417::simulator
