#include "line/frame_fields.h"

#include <algorithm>

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

constexpr int wordLength = 2;
constexpr int bitsPerByte = 8;
constexpr int coilOn = 0xFF00;

bool isWriteOfMany(int function)
{
    return function == writeCoils || function == writeRegisters;
}

// Takes one field after the other from the front; the CRC is the end's.
class Fields {
public:
    explicit Fields(const QByteArray& frame)
        : frame_(frame),
          end_(static_cast<int>(frame.size()) - (frame.size() >= minFrameLength ? crcLength : 0))
    {
    }

    bool has(int count) const
    {
        return next_ + count <= end_;
    }
    int byte() const
    {
        return byteAt(frame_, next_);
    }
    int word() const
    {
        return wordAt(frame_, next_);
    }
    void add(int count, const std::string& name, const std::string& meaning)
    {
        fields_.push_back({next_, count, name, meaning});
        next_ += count;
    }
    void addWord(const std::string& name)
    {
        if (has(wordLength))
            add(wordLength, name, std::to_string(word()));
    }

    bool addHead()
    {
        if (!has(1))
            return false;
        const int station = byte();
        add(1, "station",
            station == broadcastStation ? "0, all stations" : std::to_string(station));
        if (!has(1))
            return false;
        const int function = byte();
        const bool isException = (function & exceptionFlag) != 0;
        add(1, "function",
            (isException ? "exception to " : "") + functionName(function & ~exceptionFlag));
        return true;
    }

    void addBits(const std::string& unit, int first, int count)
    {
        for (int i = 0; has(1); ++i) {
            const int from = first + i * bitsPerByte;
            add(1, unit + "s from " + std::to_string(from), bitsOf(count - i * bitsPerByte));
        }
    }

    void addWords(const std::string& unit, int first)
    {
        for (int i = first; has(wordLength); ++i)
            addWord(unit + " " + std::to_string(i));
    }
    // Nobody knows of which addresses.
    void addValues(bool areBits)
    {
        for (int i = 1; areBits ? has(1) : has(wordLength); ++i)
            if (areBits)
                add(1, "value byte " + std::to_string(i), bitsOf(bitsPerByte));
            else
                addWord("value " + std::to_string(i));
    }

    std::vector<FrameField> taken()
    {
        if (next_ < end_)
            add(end_ - next_, "other bytes", "");
        if (end_ < frame_.size()) {
            end_ = static_cast<int>(frame_.size());
            add(crcLength, "CRC", hasGoodCrc(frame_) ? "right" : "wrong");
        }
        return fields_;
    }

private:
    std::string bitsOf(int count) const
    {
        std::string bits;
        for (int bit = 0; bit < std::min(count, bitsPerByte); ++bit)
            bits.append((byte() >> bit & 1) != 0 ? "1" : "0");
        return bits + ", the first one to the left";
    }

    const QByteArray& frame_;
    int end_;
    int next_ = 0;
    std::vector<FrameField> fields_;
};

bool isKnown(int function)
{
    return isReadFunction(function) || function == writeCoil || function == writeRegister ||
           isWriteOfMany(function);
}

void addWritten(Fields& fields, int function)
{
    if (!fields.has(wordLength))
        return;
    if (function == writeCoil)
        fields.add(wordLength, "value",
                   fields.word() == coilOn ? "on"
                   : fields.word() == 0    ? "off"
                                           : "neither on nor off");
    else
        fields.addWord("value");
}

// Are the values of this read's reply those that were asked for?
bool isAnswerTo(const QByteArray& request, const QByteArray& reply)
{
    constexpr int readLength = minFrameLength + 2 * wordLength;
    const int function = byteAt(reply, functionIndex);
    return request.size() == readLength && stationOf(request) == stationOf(reply) &&
           byteAt(request, functionIndex) == function && reply.size() == lengthOfReplyTo(request);
}

} // namespace

std::vector<FrameField> requestFields(const QByteArray& frame)
{
    Fields fields(frame);
    if (!fields.addHead())
        return fields.taken();
    const int function = byteAt(frame, functionIndex);
    if (!isKnown(function) || !fields.has(wordLength))
        return fields.taken();
    const std::string what = unitName(function);
    const int first = fields.word();
    fields.addWord("first " + what);
    if (function == writeCoil || function == writeRegister) {
        addWritten(fields, function);
        return fields.taken();
    }
    const int count = fields.has(wordLength) ? fields.word() : 0;
    fields.addWord(what + " count");
    if (isWriteOfMany(function) && fields.has(1)) {
        fields.add(1, "byte count", std::to_string(fields.byte()));
        if (function == writeCoils)
            fields.addBits(what, first, count);
        else
            fields.addWords(what, first);
    }
    return fields.taken();
}

std::vector<FrameField> replyFields(const QByteArray& frame, const QByteArray& request)
{
    Fields fields(frame);
    if (!fields.addHead())
        return fields.taken();
    const int function = functionOf(frame);
    if (byteAt(frame, functionIndex) != function) {
        if (fields.has(1))
            fields.add(1, "exception code",
                       std::to_string(fields.byte()) + ", " + exceptionName(fields.byte()));
        return fields.taken();
    }
    const std::string what = unitName(function);
    if (isReadFunction(function) && fields.has(1)) {
        fields.add(1, "byte count", std::to_string(fields.byte()));
        if (!isAnswerTo(request, frame))
            fields.addValues(holdsBits(function));
        else if (holdsBits(function))
            fields.addBits(what, wordAt(request, addressIndex), wordAt(request, quantityIndex));
        else
            fields.addWords(what, wordAt(request, addressIndex));
    } else if (isKnown(function)) {
        fields.addWord("first " + what);
        if (isWriteOfMany(function))
            fields.addWord(what + " count");
        else
            addWritten(fields, function);
    }
    return fields.taken();
}

} // namespace dov417
