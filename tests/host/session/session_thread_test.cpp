#include <QThread>

#include "session_world.h"

namespace dov417 {

namespace {

// A window's thread and the line's: the slave and the listener are here, the session is there.
class SessionInAThread : public SessionOnALine {
protected:
    void SetUp() override
    {
        there.moveToThread(&thread);
        thread.start();
        inThread([this]() {
            session = std::make_unique<Session>(library, SessionSettings{2, 20});
            EXPECT_TRUE(session->open(line).accepted);
        });
    }
    void TearDown() override
    {
        inThread([this]() { session.reset(); });
        thread.quit();
        thread.wait();
    }
    template <typename Call>
    void inThread(Call call)
    {
        QMetaObject::invokeMethod(&there, call, Qt::BlockingQueuedConnection);
    }

    QThread thread;
    QObject there;
    QObject here;
};

TEST_F(SessionInAThread, TellsTheOtherThreadByCopies)
{
    beAController();
    registers[0x0500 + 10] = 7;
    std::vector<int> values;
    int transmissions = 0;
    QObject::connect(session.get(), &Session::changed, &here, [&](const ViewChanges& changes) {
        EXPECT_EQ(QThread::currentThread(), here.thread());
        for (const ViewChange& change : changes)
            if (change.isValue)
                values.push_back(number(change.view));
    });
    QObject::connect(session.get(), &Session::transmissionEnded, &here,
                     [&](const Transmission& each) {
                         EXPECT_EQ(each.verdict, replyAccepted);
                         ++transmissions;
                     });
    inThread([this]() { session->watch({words("R_W", 10)}); });
    ASSERT_TRUE(waitUntil([&]() { return values.size() == 1; }));
    inThread([this]() { session->write(wordWrite("R_W", 10, 8), Done()); });
    ASSERT_TRUE(waitUntil([&]() { return values.back() == 8 && transmissions >= 3; }));
    EXPECT_EQ(values, (std::vector<int>{7, 8}));
}

} // namespace

} // namespace dov417
