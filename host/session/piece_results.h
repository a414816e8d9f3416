// What became of a write that goes out in several pieces, each with an outcome of its own.
#ifndef DOV417_SESSION_PIECE_RESULTS_H
#define DOV417_SESSION_PIECE_RESULTS_H

#include <vector>

#include "line/failure.h"
#include "text/addresses.h"

namespace dov417 {

class PieceResults {
public:
    // In the order of their addresses.
    void add(const Address& piece, const Result& result);
    // Accepted if each was, with whatever is to be said of one all the same. Else with the first
    // reason that there was and with the addresses that the controller has taken all the same: it
    // holds some of the values that were written.
    Result whole(const Library& library) const;

private:
    Result refusal_;     // the first; accepted: there was none
    std::string remark_; // of one that was accepted
    std::vector<Address> taken_;
};

} // namespace dov417

#endif
