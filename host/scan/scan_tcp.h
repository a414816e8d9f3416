// A scan's questions and answers over Modbus TCP: outside with a number, inside as Modbus RTU has
// them.
#ifndef DOV417_SCAN_SCAN_TCP_H
#define DOV417_SCAN_SCAN_TCP_H

#include <QByteArray>
#include <map>
#include <optional>
#include <vector>

namespace dov417 {

// What came, with a CRC.
struct ScanReply {
    QByteArray frame;
    bool isAnswer = false; // to what was asked with its number, by whom was asked
};

class ScanTcp {
public:
    QByteArray ask(const QByteArray& rtuFrame);

    // What is whole by now; nothing if it is no Modbus TCP.
    std::optional<std::vector<ScanReply>> take(const QByteArray& bytes);

private:
    bool isAnswer(int number, const QByteArray& frame);

    int number_ = 0;
    std::map<int, QByteArray> asked_; // and not answered yet
    QByteArray pending_;
};

} // namespace dov417

#endif
