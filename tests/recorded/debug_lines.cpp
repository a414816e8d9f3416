// recorded_debug_lines FILE: plans and writes of every kind, and every debug line that comes of
// them compared with the recorded ones, to the letter. Hosts have consoles and log files that look
// for these texts. recorded_debug_lines --print prints them, to record a change that is meant. Qt 5
// and 6 escape what cannot be printed; Qt 4 does not, where the names of otherNames come as they
// are.
#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <fstream>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "intf.h"

namespace {

std::vector<std::string> lines;

void keep(const QByteArray& text)
{
    std::string line = text.constData();
    while (!line.empty() && line.back() == ' ') {
        line.pop_back(); // Qt 4 leaves one
    }
    lines.push_back(line);
}

#if QT_VERSION >= 0x050000
void takeMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const bool known = type == QtDebugMsg && std::string(context.category) == "default";
    keep(known ? message.toUtf8()
               : QByteArray("neither of debug type nor of the default category"));
}
#else
void takeMessage(QtMsgType type, const char* message)
{
    keep(type == QtDebugMsg ? QByteArray(message) : QByteArray("not of debug type"));
}
#define qInstallMessageHandler qInstallMsgHandler
#endif

const char* const regNames[] = {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W",
                                "M_W",   "R_W",   "R_D",   "T",     "C"};

// Names that no register type has reach the lines of planning as the host gave them.
const char* const otherNames[] = {"",
                                  "X",
                                  "r_W",
                                  "R_W ",
                                  " R_W",
                                  "R_X_bit",
                                  "A_b_c",
                                  "_",
                                  "_bit",
                                  "%1",
                                  "%3 of %5",
                                  "say \"R\"",
                                  "a\\b",
                                  "tab\there",
                                  "line\nend",
                                  "\x01 2",
                                  "\x7f",
                                  "R\xc3\xa9gister",
                                  "\xe6\x9d\xb1\xe4\xba\xac_W",
                                  "\xf0\x9f\x94\xa7",
                                  "\xc2\xad soft",
                                  "a name longer than any register type has, by far"};

const int numbers[] = {0,  1,   9,     10,         -1,
                       -9, -10, 65535, 2147483647, std::numeric_limits<int>::min()};

// The same sequence on every machine.
class Sequence {
public:
    int below(int limit)
    {
        state_ = state_ * 1103515245u + 12345u;
        return static_cast<int>((state_ >> 8) % static_cast<unsigned int>(limit));
    }

private:
    unsigned int state_ = 417;
};

KEY_ADDRESS key(int station, const char* regName, int address, int length)
{
    KEY_ADDRESS made = KEY_ADDRESS();
    made.stationNo = station;
    made.regName = QString::fromUtf8(regName);
    made.address = address;
    made.length = length;
    return made;
}

void configure(const char* property)
{
    intf_initProperty(nullptr, 0, nullptr, nullptr, property, nullptr);
}

void planEveryName()
{
    QList<KEY_ADDRESS> keys;
    for (const char* name : regNames) {
        keys.append(key(1, name, 20, 5));
    }
    for (const char* name : otherNames) {
        keys.append(key(2, name, 7, 1));
    }
    keys.append(KEY_ADDRESS()); // a null name
    intf_addrMerge(keys);
}

void planEveryNumber()
{
    QList<KEY_ADDRESS> keys;
    for (const int number : numbers) {
        keys.append(key(number, "R_W", 10, 1));
        keys.append(key(1, "R_W", number, 1));
        keys.append(key(1, "M_bit", number, 3));
    }
    keys.append(key(1, "R_D", 10, -1));
    keys.append(key(1, "R_W", 10, 0));
    keys.append(key(1, "T", 0, 1000));
    intf_addrMerge(keys);
}

void planAtRandom(Sequence& sequence)
{
    QList<KEY_ADDRESS> keys;
    const int count = 1 + sequence.below(40);
    for (int i = 0; i < count; ++i) {
        // One after the other: processors differ in the order in which they make arguments.
        const int address = sequence.below(2000);
        const int length = 1 + sequence.below(200);
        const char* name = regNames[sequence.below(11)];
        keys.append(key(1 + sequence.below(3), name, address, length));
    }
    intf_addrMerge(keys);
}

void write(int station, const char* regName, int address, int length)
{
    unsigned char values[1024] = {1, 2};
    intf_setData(station, QString::fromLatin1(regName), address, length, values, 2);
}

void writeEverything(Sequence& sequence)
{
    for (const char* name : regNames) {
        write(1, name, 20, 1);
        write(1, name, 20, 0);
        write(1, name, 20, -1);
        write(1, name, 20, 512); // cut into pieces
    }
    for (const char* name : otherNames) {
        write(1, name, 20, 1);
    }
    for (const int number : numbers) {
        write(number, "R_W", 10, 2);
        write(1, "R_bit", number, 30);
    }
    for (int i = 0; i < 100; ++i) {
        const int station = sequence.below(248);
        const char* name = regNames[sequence.below(11)];
        const int address = sequence.below(4000);
        write(station, name, address, 1 + sequence.below(60));
    }
}

void run()
{
    Sequence sequence;
    configure("1#0#0#3#10");
    planEveryName();
    planEveryNumber();
    for (int i = 0; i < 8; ++i) {
        planAtRandom(sequence);
    }
    QList<KEY_ADDRESS> none;
    intf_addrMerge(none);
    writeEverything(sequence);
    configure("1#0#0#3#0"); // no limit of its own for a piece
    writeEverything(sequence);
    configure("1#1#0#3#10"); // to the cache only: nothing is queued
    write(1, "R_W", 10, 1);
}

int compare(const char* path)
{
    std::ifstream file(path);
    std::string expected;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (!std::getline(file, expected) || lines[i] != expected) {
            std::cerr << path << ':' << i + 1 << ": recorded is\n  " << expected << "\ncame\n  "
                      << lines[i] << '\n';
            return 1;
        }
    }
    if (lines.empty() || std::getline(file, expected)) {
        std::cerr << path << ": " << lines.size() << " lines came, more are recorded\n";
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: recorded_debug_lines FILE | --print\n";
        return 2;
    }
    qInstallMessageHandler(takeMessage);
    run();
    qInstallMessageHandler(nullptr);
    if (argv[1] != std::string("--print")) {
        return compare(argv[1]);
    }
    for (const std::string& line : lines) {
        std::cout << line << '\n';
    }
    return 0;
}
