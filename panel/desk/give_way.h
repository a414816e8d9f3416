// Who gives way on a busy machine: what draws, never what polls.
#ifndef DOV417_PANEL_GIVE_WAY_H
#define DOV417_PANEL_GIVE_WAY_H

namespace dov417 {

// The calling thread, and each thread and program that it starts from now on, takes less of a
// processor that others want, too. There is no way back. To be called once the line's thread has
// been started: that one stays as it is, and so does the own controller, which it starts.
void giveWay();

} // namespace dov417

#endif
