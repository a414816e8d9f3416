// The request that ends the doubt whether an earlier reply is still to come: as controllers answer
// in order, nothing older comes once its reply is there.
#ifndef DOV417_LINK_MARKER_H
#define DOV417_LINK_MARKER_H

#include "link/books.h"
#include "link/transmission.h"

namespace dov417 {

// A request to the same station whose reply cannot be mistaken for another: a diagnostics echo with
// a number of its own, or else a read of a length that no open transmission has, nor the one that
// was answered last, whose reply may come once more. Without a reply if there is none.
enum class MarkerKind {
    echo,
    read,       // the request itself, of another length: nothing of what only writes
    readAlso,   // of what is written, too
    readOfProbe // may be longer: many are sent in vain
};
Transmission makeMarker(const Transmission& request, const Books& books,
                        const OpenTransmission& answered, MarkerKind kind,
                        unsigned short& nextNumber);

// Is it a diagnostics echo, or the answer to one?
bool isEcho(const QByteArray& frame);

} // namespace dov417

#endif
