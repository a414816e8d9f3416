#include "session/views.h"

#include <gtest/gtest.h>

#include "loaded_library.h"
#include "session_world.h"

namespace dov417 {

namespace {

using ViewsOfAScreen = LoadedLibrary;

// Whoever collects changes may be told of them after another screen has opened.
TEST_F(ViewsOfAScreen, KeepTheChangesOfWhatStaysUnderItsNewPlace)
{
    Views views(library);
    views.replace({words("R_W", 10), words("R_W", 20)}, {});
    views.takeChanges();
    views.countWrite(words("R_W", 20), 1);
    ASSERT_TRUE(views.haveChanged());
    views.replace({words("R_W", 20)}, {words("R_W", 20)});
    const ViewChanges changes = views.takeChanges();
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes.front().index, 0U);
    EXPECT_EQ(changes.front().view.address.first, 20);
}

} // namespace

} // namespace dov417
