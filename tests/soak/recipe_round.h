// Recipes to and from the controller, over and over: what went down must come up.
#ifndef DOV417_TESTS_SOAK_RECIPE_ROUND_H
#define DOV417_TESTS_SOAK_RECIPE_ROUND_H

#include <random>
#include <vector>

#include "intf.h"
#include "simulator/memory.h"

class RecipeRound {
public:
    RecipeRound(dov417::simulator::Memory& memory, std::vector<unsigned char>& block,
                std::vector<unsigned short>& buffer);

    void plan();
    // Starts a download with new values, unless a transfer is under way.
    void start(std::mt19937& random);
    // After each transaction: has the transfer ended?
    void look(int sendKind, int result);
    void reset();

    bool underWay() const
    {
        return stage_ != idle;
    }
    std::uint64_t downloads() const
    {
        return downloads_;
    }
    std::uint64_t uploads() const
    {
        return uploads_;
    }
    std::uint64_t givenUp() const
    {
        return givenUp_;
    }

private:
    enum Stage {
        idle,
        downloading,
        uploading
    };

    void compare(const char* direction) const;

    dov417::simulator::Memory& memory_;
    std::vector<unsigned char>& block_;
    std::vector<unsigned short>& buffer_;
    Stage stage_ = idle;
    bool failed_ = false;
    std::uint64_t downloads_ = 0;
    std::uint64_t uploads_ = 0;
    std::uint64_t givenUp_ = 0;
};

#endif
