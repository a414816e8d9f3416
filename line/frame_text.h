// A Modbus RTU frame in hex and in words.
#ifndef DOV417_LINE_FRAME_TEXT_H
#define DOV417_LINE_FRAME_TEXT_H

#include <QByteArray>
#include <optional>
#include <string>
#include <vector>

#include "line/areas.h"

namespace dov417 {

// "01 03 05 0A"
std::string hexText(const QByteArray& bytes);
// With blanks between the bytes or without, in either case. Nothing where the text is none.
std::optional<QByteArray> parseHexText(const std::string& text);

// "illegal data address"; "code 99" where the code has no name.
std::string exceptionName(int code);

// "read coils", "write registers"; "function 43" where it has no name here.
std::string functionName(int function);

// What a function reads or writes of the four tables that a station has: "coil", "input",
// "register", "input register".
std::string unitName(int function);

// "station 1: read 8 registers from 1380 (R_W:100..107)". Says what is wrong with a frame that is
// cut short or has a bad CRC. Without areas only the numbers on the line are given.
std::string requestText(const QByteArray& frame, const std::vector<Area>& areas);

// "station 1: R_W:100..107 = 1 2 3 4 5 6 7 8", "station 1: exception 2, illegal data address".
// The request tells what the values are values of; it may be empty. Says what does not fit: another
// station, another function, another length, a bad CRC.
std::string replyText(const QByteArray& reply, const QByteArray& request,
                      const std::vector<Area>& areas);

} // namespace dov417

#endif
