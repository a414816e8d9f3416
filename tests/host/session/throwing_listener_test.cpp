// A listener or done function that throws: the others are told all the same, and what follows.
#include "session/session.h"

#include <stdexcept>

#include "session_world.h"

namespace dov417 {

namespace {

class ThrowingListener : public SessionOnALine {
protected:
    void SetUp() override
    {
        SessionOnALine::SetUp();
        QObject::connect(session.get(), &Session::noticed, session.get(),
                         [this](const std::string& text) { notices.push_back(text); });
    }

    static Done thrower()
    {
        return [](const Result&) { throw std::runtime_error("too much"); };
    }

    std::vector<std::string> notices;
};

TEST_F(ThrowingListener, OneThatThrowsFromTheEventLoopIsNoticedAndTheOthersAreTold)
{
    session->write(wordWrite("R_W", 1, 1), thrower());
    session->write(wordWrite("R_W", 2, 2), outcome(2));
    ASSERT_TRUE(waitForOutcomes(1));
    ASSERT_TRUE(waitUntil([this]() { return !notices.empty(); }));
    EXPECT_EQ(notices, std::vector<std::string>{"a listener threw an exception: too much"});
}

TEST_F(ThrowingListener, CloseTellsAllAndThrowsNothing)
{
    session->write(wordWrite("R_W", 1, 1), thrower());
    session->write(wordWrite("R_W", 2, 2), outcome(2));
    EXPECT_NO_THROW(session->close("enough"));
    EXPECT_EQ(outcomes[2], "enough");
    // And once more, which counts no listener as not having returned.
    ASSERT_TRUE(session->open(line).accepted);
    session->write(wordWrite("R_W", 3, 3), outcome(3));
    session->close("enough");
    EXPECT_EQ(outcomes[3], "enough");
}

TEST_F(ThrowingListener, OneThatThrowsWhenToldOfItIsToldNoMore)
{
    QObject::connect(session.get(), &Session::noticed, session.get(),
                     [](const std::string&) { throw 7; });
    session->write(wordWrite("R_W", 1, 1), thrower());
    session->write(wordWrite("R_W", 2, 2), outcome(2));
    ASSERT_TRUE(waitForOutcomes(1));
    ASSERT_TRUE(waitUntil([this]() { return !notices.empty(); }));
    session->write(wordWrite("R_W", 3, 3), outcome(3));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(notices.size(), 1U);
    // What another throws later is told again.
    session->write(wordWrite("R_W", 4, 4), thrower());
    ASSERT_TRUE(waitUntil([this]() { return notices.size() == 2; }));
}

TEST_F(ThrowingListener, NoBytesAreCachedOfAnAddressWithoutLength)
{
    EXPECT_TRUE(session->cachedBytes(words("R_W", 10, 0)).empty());
    EXPECT_TRUE(session->cachedBytes(words("R_W", 10, -1)).empty());
}

} // namespace

} // namespace dov417
