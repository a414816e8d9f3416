#include "live/simulation_record.h"

#include <nlohmann/json.hpp>

#include "line/failure.h"
#include "live/serial_format_json.h"

namespace dov417 {

namespace simulator {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SimulationOptions, stations, device, link, line, ownSpeedOnly,
                                   baudLimit, responseTimeMs, strict, faults, seed, frozen,
                                   followInputs, hold, holdWritten, set, loadFile, dumpFile,
                                   logFile)

} // namespace simulator

std::string toRecord(const simulator::SimulationOptions& options)
{
    return nlohmann::json(options).dump();
}

simulator::SimulationOptions parseSimulationRecord(const std::string& record)
{
    try {
        return nlohmann::json::parse(record).get<simulator::SimulationOptions>();
    } catch (const nlohmann::json::exception& exception) {
        throw Failure(std::string("no record of a controller's options: ") + exception.what());
    }
}

} // namespace dov417
