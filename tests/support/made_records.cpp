#include "made_records.h"

#include <iomanip>
#include <sstream>

namespace {

template <typename Record>
std::string describe(const Record& record)
{
    std::ostringstream out;
    out << record.stationNo << '/' << text(record.regName) << ':' << record.address << '+'
        << record.length;
    return out.str();
}

template <typename List>
std::vector<std::string> describeAll(const List& list)
{
    std::vector<std::string> all;
    for (int i = 0; i < list.size(); ++i) {
        all.push_back(describe(list.at(i)));
    }
    return all;
}

} // namespace

unsigned int bitwiseCrc(const unsigned char* bytes, int length)
{
    unsigned int crc = 0xFFFF;
    for (int i = 0; i < length; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1u) != 0 ? (crc >> 1) ^ 0xA001u : crc >> 1;
        }
    }
    return crc;
}

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

QByteArray withCrc(const QByteArray& bytes)
{
    const unsigned int crc = bitwiseCrc(reinterpret_cast<const unsigned char*>(bytes.constData()),
                                        static_cast<int>(bytes.size()));
    QByteArray all = bytes;
    all.append(static_cast<char>(crc & 0xFFu));
    all.append(static_cast<char>(crc >> 8));
    return all;
}

QByteArray withCrc(const char* text)
{
    return withCrc(hex(text));
}

std::string toHex(const unsigned char* bytes, int length)
{
    std::ostringstream out;
    for (int i = 0; i < length; ++i) {
        out << (i == 0 ? "" : " ") << std::uppercase << std::hex << std::setw(2)
            << std::setfill('0') << static_cast<int>(bytes[i]);
    }
    return out.str();
}

std::string toHex(const QByteArray& bytes)
{
    return toHex(reinterpret_cast<const unsigned char*>(bytes.constData()),
                 static_cast<int>(bytes.size()));
}

std::string frameHex(const FRAME_PRO& frame)
{
    return toHex(frame.frame, frame.sendLength);
}

std::string frame(const char* bytes)
{
    return toHex(withCrc(bytes));
}

std::string repeated(const char* bytes, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += i == 0 ? "" : " ";
        all += bytes;
    }
    return all;
}

QByteArray goodReplyTo(const FRAME_PRO& frame)
{
    if (frame.replyLength == 0) {
        return QByteArray();
    }
    const QByteArray sent(reinterpret_cast<const char*>(frame.frame), frame.sendLength);
    const int function = sent.at(1);
    if (function != 1 && function != 3) {
        return withCrc(sent.left(6));
    }
    const int quantity =
        static_cast<unsigned char>(sent.at(4)) * 256 + static_cast<unsigned char>(sent.at(5));
    const int bytes = function == 1 ? quantity / 8 : quantity * 2;
    QByteArray reply = sent.left(2);
    reply.append(static_cast<char>(bytes));
    reply.append(QByteArray(bytes, '\0'));
    return withCrc(reply);
}

std::string text(const QString& string)
{
    return string.toLatin1().constData();
}

QString name(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

KEY_ADDRESS key(const char* regName, int address, int length, int station, int bitFlag)
{
    KEY_ADDRESS made = KEY_ADDRESS();
    made.stationNo = station;
    made.regName = name(regName);
    made.address = address;
    made.bitFlag = bitFlag;
    made.length = length;
    return made;
}

VARIABLE request(const char* regName, int address, int length, int station,
                 const std::vector<int>& data)
{
    VARIABLE made = VARIABLE();
    made.stationNo = station;
    made.regName = name(regName);
    made.address = address;
    made.length = length;
    for (size_t i = 0; i < data.size() && i < sizeof(made.data); ++i) {
        made.data[i] = static_cast<unsigned char>(data[i]);
    }
    return made;
}

_RCP_VAR_PRO recipeRecord(int linkId, const char* regName, int address, int length, int bufOffset,
                          int station)
{
    _RCP_VAR_PRO made = _RCP_VAR_PRO();
    made.linkId = linkId;
    made.stationNo = station;
    made.regName = name(regName);
    made.address = address;
    made.length = length;
    made.bufOffset = bufOffset;
    return made;
}

std::string summary(const VARIABLE& one)
{
    return describe(one);
}

std::string summary(const KEY_ADDRESS& one)
{
    return describe(one);
}

std::vector<std::string> summary(const QList<VARIABLE>& list)
{
    return describeAll(list);
}

std::vector<std::string> summary(const QList<KEY_ADDRESS>& list)
{
    return describeAll(list);
}

std::vector<std::string> summary(const QVector<_RCP_VAR_PRO>& list)
{
    return describeAll(list);
}
