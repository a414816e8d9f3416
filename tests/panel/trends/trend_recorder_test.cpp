#include "panel/trends/trend_recorder.h"

#include "made_trends.h"
#include "panel_world.h"

namespace dov417 {

namespace {

class ATrendRecorder : public PanelWorld {
protected:
    ATrendRecorder()
    {
        watch({"R_W:100"});
        batch.state.phase = LinePhase::open;
        QObject::connect(&recorder, &TrendRecorder::doubted, &recorder, [this]() { ++notes; });
    }
    // A second after the one before, and read shortly before that.
    void tell(int value, int doubts)
    {
        told += 1;
        batch.made = moment(told);
        batch.values = {wordView(address(), value, told - 0.5, told - 0.5, doubts)};
        batch.state.doubts = doubts;
        desk.play(batch);
    }
    const Address& address() const
    {
        return desk.tags().values.front().address;
    }

    LineBatch batch;
    TrendHistory history;
    TrendRecorder recorder{desk, history};
    double told = 0;
    int notes = 0;
};

// The window may hear of it when the value was read again already.
TEST_F(ATrendRecorder, NotesOnceThatWhatIsBeforeIsInDoubt)
{
    tell(7, 0);
    EXPECT_EQ(notes, 0);
    tell(8, 1);
    EXPECT_EQ(notes, 1);
    EXPECT_EQ(heldIn(history, address()), "7@0.5 -doubtful@0.500001 until 0.5");
    tell(8, 1);
    EXPECT_EQ(notes, 1);
    EXPECT_TRUE(history.isKnown(address()));
    tell(9, 2);
    EXPECT_EQ(notes, 2);
}

TEST_F(ATrendRecorder, NotesNoDoubtOfWhatWasNeverKnown)
{
    tell(8, 1);
    EXPECT_EQ(notes, 0);
}

} // namespace

} // namespace dov417
