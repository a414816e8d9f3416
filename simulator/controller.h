// The controller's end of Modbus RTU: one received frame in, the reply's bytes out.
//
// No line, no time and no Qt event loop: tests, fuzzers and soak programs can drive it directly.
//
//     Memory memory({1, 2});
//     Controller controller(memory);
//     const QByteArray reply = controller.answer(request); // empty: the line stays silent
//
// Functions 1, 3, 5, 6, 15 and 16. Exception 1 for any other function, 3 for a quantity, value,
// byte count or length that cannot be, 2 for addresses that are not there, tried in that order.
// Broadcasts (station 0) are executed in every station and answered by nothing; a read that is
// broadcast, a frame for a station that is not there and a frame with a bad CRC stay unanswered.
//
// This family of controllers takes up to 128 registers or 2048 coils in one request, three more
// than the Modbus application protocol has room for: the one byte that counts 256 data bytes is 0,
// in replies to reads and in write requests alike. Limits::strict() is a controller that keeps to
// the protocol.
#ifndef DOV417_SIMULATOR_CONTROLLER_H
#define DOV417_SIMULATOR_CONTROLLER_H

#include <QByteArray>
#include <cstdint>
#include <string>

#include "simulator/memory.h"

namespace dov417::simulator {

// Maximum units of one request.
struct Limits {
    int readRegisters = 128;
    int readCoils = 2048;
    int writeRegisters = 128;
    int writeCoils = 2048;

    static Limits strict();
};

// What became of a received frame.
enum class Outcome {
    answered,     // executed, reply made
    refused,      // exception reply made
    broadcast,    // station 0: executed where it could be, no reply
    otherStation, // a good frame for a station that is not here
    badFrame      // too short for a frame, or its CRC does not fit
};

// A received frame, taken apart, and its reply.
struct Answer {
    Outcome outcome = Outcome::badFrame;
    int station = -1;  // -1 where the frame has none
    int function = -1; // as requested, without the exception bit
    int address = -1;  // first coil or register, -1 where the frame names none
    int count = 0;     // coils or registers
    int exception = 0; // 1 to 3 when refused; a refused broadcast has its reason here as well
    QByteArray reply;  // CRC included; empty: nothing is sent
};

struct ControllerCounters {
    std::uint64_t frames = 0; // everything handed in
    std::uint64_t answered = 0;
    std::uint64_t refused = 0;
    std::uint64_t broadcasts = 0;
    std::uint64_t otherStation = 0;
    std::uint64_t badFrames = 0;
    std::uint64_t writes = 0; // executed writes, broadcasts included
};

class Controller {
public:
    // The memory is borrowed and must outlive the controller.
    explicit Controller(Memory& memory, const Limits& limits = Limits());

    Answer serve(const QByteArray& request);
    QByteArray answer(const QByteArray& request);

    Memory& memory();
    const ControllerCounters& counters() const;

private:
    Answer decide(const QByteArray& request);

    Memory& memory_;
    Limits limits_;
    ControllerCounters counters_;
};

// Length of the request that these bytes begin, CRC included: 8, or 9 + n for writes of several
// units. -1: too few bytes to tell. 0: not to be told from the bytes (unknown function, or a byte
// count that contradicts the quantity), only silence ends such a frame.
int requestLength(const QByteArray& begin);

// One line for the log: "station 1 reads registers 1380 to 1387", "exception 2, illegal data
// address".
std::string describe(const Answer& answer);
const char* exceptionName(int code);

} // namespace dov417::simulator

#endif
