// What a scan asks, and what the bytes are that come.
#ifndef DOV417_SCAN_SCAN_FRAMES_H
#define DOV417_SCAN_SCAN_FRAMES_H

#include <QByteArray>
#include <array>
#include <optional>
#include <vector>

#include "line/areas.h"

namespace dov417 {

// A read, as any controller answers one: with a value or with an exception.
struct ScanQuestion {
    QByteArray body;     // function, address, quantity: all but station and CRC
    int replyLength = 0; // of the reply that has a value

    QByteArray frameTo(int station) const;
};

// Words of one area: not more than a request reads.
ScanQuestion readOf(const Area& area, int first, int words);

// Two whose replies cannot be mistaken for each other: by the first answer a station is known, by
// the second that it was asked just now.
using ScanQuestions = std::array<ScanQuestion, 2>;

// A word of the first area, and one of the first that is read with another function. Throws a
// Failure where there is only one function.
ScanQuestions questionsFrom(const std::vector<Area>& areas);

struct ScanPiece {
    enum Kind {
        answer,  // to one of the two questions, whoever asked
        absent,  // a gateway's exception: the station does not answer it
        foreign, // another sound frame
        noise    // no frame
    };
    Kind kind = noise;
    QByteArray bytes;
    int station = 0;          // of a frame
    std::size_t question = 0; // of an answer, or of that exception
};

// Cuts what comes into pieces.
class ScanEar {
public:
    // behindGateway: exceptions 10 and 11 are its own.
    explicit ScanEar(const ScanQuestions& questions, bool behindGateway = false);

    // This goes out now: an adapter may hear it too.
    void asks(const QByteArray& frame);

    void add(const QByteArray& bytes);
    bool isEmpty() const;

    // The next piece; none until more has come, or it is certain that nothing more comes.
    std::optional<ScanPiece> take(bool isSilent);

private:
    bool dropEcho(bool isSilent);
    std::optional<ScanPiece> answerAt(int first) const;
    ScanPiece cut(int length, ScanPiece::Kind kind);
    int soundLength() const;

    ScanQuestions questions_;
    bool behindGateway_;
    QByteArray pending_;
    QByteArray echo_; // that may come
};

} // namespace dov417

#endif
