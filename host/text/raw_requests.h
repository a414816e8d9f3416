// Requests as people type them for what no register type names: numbers as they go over the line.
#ifndef DOV417_TEXT_RAW_REQUESTS_H
#define DOV417_TEXT_RAW_REQUESTS_H

#include <QByteArray>
#include <string>
#include <vector>

namespace dov417 {

// STATION FUNCTION DATA..., as whole numbers, decimal or with 0x in front; what the data of a
// function are, is in its refusal and in the manual page. The frame with its CRC. Throws a
// UsageFailure.
QByteArray parseRequest(const std::vector<std::string>& words);

// Bytes in hex from the station on, without a CRC; the frame with it. Throws a UsageFailure.
QByteArray parseRawRequest(const std::string& text);

} // namespace dov417

#endif
