// The whole simulated controller: memory, plant, faults and line, from one plain set of options.
//
//     SimulationOptions options;
//     options.stations = {1, 2};
//     options.link = "/tmp/plc";
//     options.faults = {"flip=10%", "silence=every:7"};
//     Simulation simulation(options);
//     simulation.start();
//     std::puts(simulation.portName().c_str());
//     app.exec();
//     simulation.stop();
//     std::puts(simulation.report().c_str());
//
// Lives in the thread that it was made in or moved to before start(), which needs a Qt event loop.
#ifndef DOV417_SIMULATOR_SIMULATION_H
#define DOV417_SIMULATOR_SIMULATION_H

#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QTimer>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "simulator/conditions.h"
#include "simulator/line_server.h"
#include "simulator/plant.h"

namespace dov417::simulator {

struct SimulationOptions {
    std::vector<int> stations = {1};
    std::string device; // serial device; empty: a pseudo-terminal
    std::string link;   // symbolic link to the pseudo-terminal; empty: none
    SerialFormat line;
    bool ownSpeedOnly = false;       // on a pseudo-terminal: another speed is garbled, as on a wire
    bool baudLimit = false;          // bytes take the time that they take on the line
    int responseTimeMs = 0;          // what the controller takes before it answers
    bool strict = false;             // 125 registers, 2000 coils and no more
    std::vector<std::string> faults; // rules, see faults.h
    std::uint32_t seed = 1;          // of faults and plant
    bool frozen = false;             // values do not live
    bool followInputs = true;        // Q shows I
    std::vector<std::string> hold;   // ranges that do not live, see address_range.h
    bool holdWritten = true;      // a word that was written by the line or by `set` lives no longer
    std::vector<std::string> set; // ADDRESS=VALUE, see set_load.h; after the file
    std::string loadFile;         // values before the line is opened, see set_load.h
    std::string dumpFile;         // written by stop()
    std::string logFile;          // every frame; "-" is standard output
};

class Simulation : public QObject {
    Q_OBJECT

public:
    explicit Simulation(const SimulationOptions& options, QObject* parent = nullptr);
    ~Simulation() override; // stops

    // Throws a Failure when an option is wrong or the line cannot be had.
    void start();
    // Closes the line and writes the dump; throws a Failure when it cannot be written. Once
    // stopped, nothing happens.
    void stop();

    // Once started. Throws a UsageFailure where they cannot be, and nothing is different then; a
    // Failure where the port does not come back. On a pseudo-terminal the cable can be pulled only
    // if it has a link.
    void setConditions(const Conditions& conditions);
    const Conditions& conditions() const;

    std::string portName() const;
    std::string report() const; // counters and faults, several lines
    FaultCounts faultCounts() const;

    // Valid from a successful start() on, also after stop().
    Memory& memory();
    Controller& controller();
    Faults& faults();
    Plant& plant();
    LineServer& line();

private:
    void prepare();
    void letPlantLive();
    void holdWritten(const Answer& answer);
    void log(const LineEvent& event);

    void plug(bool isPlugged);

    SimulationOptions options_;
    Conditions conditions_;
    Memory memory_;
    Controller controller_;
    Faults faults_;
    Plant plant_;
    std::unique_ptr<LineServer> line_;
    bool started_ = false;
    QTimer plantTimer_;
    QElapsedTimer plantClock_;
    QFile log_;
};

} // namespace dov417::simulator

#endif
