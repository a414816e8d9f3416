// A recipe on its way through the driver: one transfer at a time, round by round.
//
// A transfer begins and goes on only while no frame is under way: only then is it certain whose the
// next frames are.
#ifndef DOV417_SESSION_RECIPE_TRANSFER_H
#define DOV417_SESSION_RECIPE_TRANSFER_H

#include <QMutex>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "driver/library.h"
#include "line/failure.h"
#include "link/transmission.h"
#include "session/recipe_layout.h"
#include "session/tellings.h"

namespace dov417 {

enum class RecipeDirection {
    upload,  // controller to words
    download // words to controller
};

using RecipeWords = std::vector<std::uint16_t>;
// The words are those of the recipe: what was read, or what was handed in.
using RecipeDone = std::function<void(const Result&, const RecipeWords& words)>;

class RecipeTransfer {
public:
    RecipeTransfer(const Library& library, Tellings& tellings);

    // What intf_initProperty() is handed.
    unsigned char* block();
    unsigned short* buffer();
    QMutex* mutex();

    // Refused, by way of done, while another is under way and where the layout does not fit.
    void start(const RecipeLayout& layout, RecipeDirection direction, const RecipeWords& words,
               RecipeDone done);
    // To be called while no frame is under way. True if the driver has something to send now.
    bool beginRound();
    bool isUnderWay() const;
    // A round is under way: the frames are the recipe's.
    bool isMoving() const;
    // May a part of this request begin with that word?
    bool mayCut(const Request& request, int word) const;
    // The request behind this frame has ended.
    void settle(const Transmission& transmission);
    // Words that the controller has answered for, of the transfer that is under way or was the
    // last.
    std::size_t wordsMoved() const;
    // What was read so far may be wrong: an upload that is under way ends with this reason.
    void doubt(const std::string& reason);
    // Ends the transfer, if there is one, and takes the driver's flags back.
    void end(const std::string& reason);

private:
    Result refusal(const RecipeLayout& layout, RecipeDirection direction) const;
    bool flagIsSet();
    void setFlag(bool set);
    void tellEnd(const Result& result);

    const Library& library_;
    Tellings& tellings_;
    QMutex blockMutex_;
    std::vector<unsigned char> block_;
    std::vector<unsigned short> buffer_;

    std::deque<std::vector<RecipeRecord>> rounds_; // still to be moved, the current one first
    std::size_t flag_ = 0;                         // offset in the block
    std::size_t words_ = 0;
    std::size_t wordsMoved_ = 0;
    WholeValues wholeValues_;
    bool underWay_ = false;
    std::string doubt_;   // why an upload is not good however it ends
    bool moving_ = false; // the flag is set
    RecipeDone done_;
};

} // namespace dov417

#endif
