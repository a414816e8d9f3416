#include "panel/desk/recipe_worker.h"

#include <gtest/gtest.h>

#include "session/items.h"
#include "session/session_world.h"

namespace dov417 {

namespace {

using ARecipeWorker = SessionOnALine;

// The session tells of what came in batches: a poll's reply may have come right before.
TEST_F(ARecipeWorker, CallsNoReadingNewerThanTheFirstOfItsWords)
{
    beAController();
    RecipeWorker worker(nullptr);
    RecipeNews last;
    QObject::connect(&worker, &RecipeWorker::told, &worker,
                     [&last](const RecipeNews& news) { last = news; });
    RecipeOrder order;
    for (const char* address : {"R_W:5", "R_W:6"}) {
        RecipeEntry entry;
        entry.item = Items(library, ItemSource()).find(address, Access::read);
        order.entries.push_back(entry);
    }
    Transmission poll;
    poll.request.kind = sendCyclicRead;
    poll.request.station = 1;
    poll.request.regName = "R_W";
    poll.request.address = 5;
    poll.request.length = 1;
    poll.sent = QByteArray::fromHex("010300050001");
    poll.verdict = replyAccepted;
    poll.asOf = Clock::now();

    worker.start(*session, order);
    emit session->transmissionEnded(poll);
    ASSERT_TRUE(waitUntil([&last]() { return last.hasEnded; }));
    ASSERT_EQ(last.asOfEach.size(), 2U);
    EXPECT_EQ(last.asOfEach.front(), poll.asOf);
    EXPECT_EQ(last.asOf, poll.asOf) << "of it all nothing is older";
    EXPECT_GT(last.asOfEach.back(), poll.asOf);
}

} // namespace

} // namespace dov417
