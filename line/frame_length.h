// How long a frame is, as far as its own bytes tell.
#ifndef DOV417_LINE_FRAME_LENGTH_H
#define DOV417_LINE_FRAME_LENGTH_H

#include <QByteArray>

namespace dov417 {

constexpr int notYetTold = 0; // more bytes are needed
constexpr int neverTold = -1; // it ends with a pause

// Where a length is asked for, that of a reply which ends with a pause: greater than any frame's.
constexpr int untoldLength = 512;

// Of the request, or of the reply, that these bytes begin, with its CRC.
int lengthOfRequest(const QByteArray& begin);
int lengthOfReply(const QByteArray& begin);

// Of what begins as a reply whose count may be 256, which its byte says as 0: 128 registers.
int maxLengthOfReply(const QByteArray& begin);

// Of the sound reply to a whole request; an exception has five bytes.
int lengthOfReplyTo(const QByteArray& request);

// So many bytes at the front of a request come back at the front of its reply, whatever its values
// are: station and function, and of writes the address.
int echoedHead(const QByteArray& request);

} // namespace dov417

#endif
