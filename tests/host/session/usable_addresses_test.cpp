// What the driver would send to another station or area, or keep in its queue for ever.
#include "session/session.h"

#include <climits>
#include <gmock/gmock.h>

#include "session_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;

Address at(int station, Address address)
{
    address.station = station;
    return address;
}

struct Case {
    Address address;
    const char* why;
};

const std::vector<Case>& elsewhereOrNever()
{
    static const std::vector<Case> cases = {
        {words("R_W", 10, 1, 257), "'257' is no station"}, // goes out as station 1
        {words("R_W", 10, 1, 248), "'248' is no station"},
        {words("R_W", 10, 1, -1), "'-1' is no station"},
        {words("I_W", 128), "out of range"}, // is coil 2048, the first one of Q
        {words("R_W", 4000), "out of range"},
        {words("R_W", 3999, 2), "out of range"},
        {words("R_W", -1), "is no address of R_W"},
        {words("M_bit", 5), "M_bit"},
        {words("X_W", 5), "unknown register 'X_W'"},
        {words("", 5), "unknown register ''"},
        {words("R_D", 10, 1), "R_D"},
    };
    return cases;
}

const std::vector<Address>& ofNoLength()
{
    static const std::vector<Address> addresses = {words("R_W", 10, 0), words("R_W", 10, -3),
                                                   words("R_W", 10, INT_MAX),
                                                   words("R_W", INT_MAX, INT_MAX)};
    return addresses;
}

class UsableAddresses : public SessionOnALine {
protected:
    UsableAddresses()
    {
        beAController();
    }

    // Each is ended once, nothing went out for it, and what is asked for next is answered.
    void expectRefused(const Address& address, const char* why)
    {
        SCOPED_TRACE(address.regName + " " + std::to_string(address.station) + " " +
                     std::to_string(address.first) + " " + std::to_string(address.length));
        ASSERT_TRUE(waitUntil([this]() { return reasons.size() == 1; }));
        EXPECT_THAT(reasons.front(), HasSubstr(why));
        EXPECT_EQ(received.size(), 0);
        session->readOnce(words("R_W", 10), note());
        ASSERT_TRUE(waitUntil([this]() { return reasons.size() > 1; }));
        EXPECT_EQ(reasons.size(), 2U) << "done once each";
        EXPECT_EQ(reasons.back(), "accepted");
        reasons.clear();
        received.clear();
    }

    Done note()
    {
        return [this](const Result& result) {
            reasons.push_back(result.accepted ? "accepted" : result.reason);
        };
    }

    RecipeDone noteRecipe()
    {
        return [this](const Result& result, const RecipeWords&) {
            reasons.push_back(result.accepted ? "accepted" : result.reason);
        };
    }

    // One record, as it is.
    static RecipeLayout layoutOf(const Address& address)
    {
        RecipeLayout layout;
        layout.rounds = {{{address, 0}}};
        layout.bufferWords = 1000;
        return layout;
    }

    std::vector<std::string> reasons;
};

TEST_F(UsableAddresses, NothingElseIsWritten)
{
    for (const Case& one : elsewhereOrNever()) {
        const auto length = static_cast<std::size_t>(one.address.length);
        session->write({one.address, std::vector<unsigned char>(2 * length)}, note());
        expectRefused(one.address, one.why);
    }
    for (const Address& address : ofNoLength()) {
        session->write({address, {}}, note());
        expectRefused(address, "the driver would not make one request of it");
    }
}

TEST_F(UsableAddresses, NothingElseIsReadOnce)
{
    for (const Case& one : elsewhereOrNever()) {
        session->readOnce(one.address, note());
        expectRefused(one.address, one.why);
    }
    for (const Address& address : ofNoLength()) {
        session->readOnce(address, note());
        expectRefused(address, "the driver would not make one request of it");
    }
    session->readOnce(words("R_W", 10, 1, 0), note());
    expectRefused(words("R_W", 10, 1, 0), "station 0 is the broadcast");
}

TEST_F(UsableAddresses, NothingElseIsWatched)
{
    for (const Case& one : elsewhereOrNever()) {
        const Result result = session->watch({words("R_W", 20), one.address});
        reasons.push_back(result.reason);
        expectRefused(one.address, one.why);
        EXPECT_EQ(session->views().size(), 0U);
    }
    for (const Address& address : ofNoLength()) {
        reasons.push_back(session->watch({address}).reason);
        expectRefused(address, "R_W");
    }
}

TEST_F(UsableAddresses, NothingElseIsMovedAsARecipe)
{
    for (const Case& one : elsewhereOrNever())
        for (const auto direction : {RecipeDirection::download, RecipeDirection::upload}) {
            if (one.address.regName == "R_D")
                continue; // a record may end within a value of its type: it moves words
            session->transferRecipe(layoutOf(one.address), direction, {1}, noteRecipe());
            expectRefused(one.address, one.address.regName.size() < 3 ||
                                               one.address.regName == "X_W" ||
                                               one.address.regName == "M_bit"
                                           ? "a recipe record is of words"
                                           : one.why);
        }
    for (const Address& address : ofNoLength()) {
        session->transferRecipe(layoutOf(address), RecipeDirection::download, {1}, noteRecipe());
        expectRefused(address, address.length > 0 ? "a recipe record is of words" : "R_W");
    }
    const Address broadcast = words("R_W", 10, 1, 0);
    session->transferRecipe(layoutOf(broadcast), RecipeDirection::upload, {}, noteRecipe());
    expectRefused(broadcast, "station 0 is the broadcast");
}

TEST_F(UsableAddresses, ARecipeRecordIsOfWordsThatOneRequestHolds)
{
    for (const Address& address : {bits("M_bit", 5), bits("R_bit", 5), words("R_W", 10, 129)}) {
        session->transferRecipe(layoutOf(address), RecipeDirection::download, {1}, noteRecipe());
        expectRefused(address, "a recipe record is of words, at most 128");
    }
}

TEST_F(UsableAddresses, WhatTheDriverTakesOnPurposeStillGoesOut)
{
    // A broadcast of words, of coils and of a recipe.
    session->write({at(0, words("R_W", 10)), {1, 0}}, note());
    ASSERT_TRUE(waitUntil([this]() { return reasons.size() == 1; }));
    Write coil{at(0, bits("M_bit", 5)), {1}};
    session->write(coil, note());
    ASSERT_TRUE(waitUntil([this]() { return reasons.size() == 2; }));
    session->transferRecipe(layOutRecipe({words("R_W", 20, 1, 0)}), RecipeDirection::download, {7},
                            noteRecipe());
    ASSERT_TRUE(waitUntil([this]() { return reasons.size() == 3; }));
    // The last one of an area, and values of a format within words.
    session->readOnce(words("R_W", 3999), note());
    Address wide = words("R_W", 40, 8);
    wide.width = Width::quadWord;
    session->readOnce(wide, note());
    ASSERT_TRUE(waitUntil([this]() { return reasons.size() == 5; }));
    // Values of which none begins where the one before ends.
    session->transferRecipe(layOutRecipe({doubleWords("R_D", 60), doubleWords("R_D", 61)}),
                            RecipeDirection::upload, {}, noteRecipe());
    ASSERT_TRUE(waitUntil([this]() { return reasons.size() == 6; }));
    for (const std::string& reason : reasons)
        EXPECT_EQ(reason, "accepted");
}

} // namespace

} // namespace dov417
