#include "session/piece_results.h"

namespace dov417 {

void PieceResults::add(const Address& piece, const Result& result)
{
    if (result.accepted && remark_.empty())
        remark_ = result.reason;
    if (!result.accepted) {
        if (refusal_.accepted)
            refusal_ = result;
    } else if (!taken_.empty() && taken_.back().first + taken_.back().length == piece.first) {
        taken_.back().length += piece.length;
    } else {
        taken_.push_back(piece);
    }
}

Result PieceResults::whole(const Library& library) const
{
    Result result = refusal_;
    if (!result.accepted)
        for (const Address& each : taken_)
            result.reason += "; " + toText(library, each) + " was taken";
    else
        result.reason = remark_;
    return result;
}

} // namespace dov417
