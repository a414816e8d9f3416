// Which of a run of words a controller answers, found by halving: a block that it refuses is asked
// in halves, down to single words.
#ifndef DOV417_SCAN_RANGE_HALVING_H
#define DOV417_SCAN_RANGE_HALVING_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dov417 {

struct WordRange {
    enum Kind {
        answered,
        refused,
        unknown // nothing was answered that would tell
    };
    int first = 0;
    int count = 0;
    Kind kind = answered;
    std::string reason; // where it is not answered
};

class RangeHalving {
public:
    // found: in ascending order, neighbours of one kind and reason together.
    RangeHalving(int first, int count, std::function<void(const WordRange&)> found);

    struct Block {
        int first = 0;
        int count = 0;
    };
    // To be asked next; none when all is known.
    std::optional<Block> block() const;

    // What became of that block.
    void isAnswered();
    void isRefused(const std::string& reason); // there may be words in it that are not
    void isRefusedWhole(const std::string& reason);
    void isUnknown(const std::string& reason);

    // Words of which it is known.
    int known() const;

    // Nothing more is asked: tells what is known and was not told yet.
    void end();

private:
    void add(WordRange::Kind kind, const std::string& reason);

    std::function<void(const WordRange&)> found_;
    std::vector<Block> blocks_; // the last is next
    std::optional<WordRange> latest_;
    int known_ = 0;
};

} // namespace dov417

#endif
