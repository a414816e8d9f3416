// A Modbus RTU frame taken apart, byte by byte.
#ifndef DOV417_LINE_FRAME_FIELDS_H
#define DOV417_LINE_FRAME_FIELDS_H

#include <QByteArray>
#include <string>
#include <vector>

namespace dov417 {

struct FrameField {
    int first; // byte
    int count;
    std::string name;    // "register count"
    std::string meaning; // "8"
};

// Together they are all bytes of the frame, in their order, whatever it holds: what has no name is
// "other bytes".
std::vector<FrameField> requestFields(const QByteArray& frame);
// The request tells the addresses that the values are of. It may be empty, or another's: then they
// are numbered only.
std::vector<FrameField> replyFields(const QByteArray& frame, const QByteArray& request);

} // namespace dov417

#endif
