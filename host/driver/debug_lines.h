// The driver tells its planning on Qt's debug stream, where it is in nobody's way in a panel. The
// output of other programs is no place for it.
#ifndef DOV417_DRIVER_DEBUG_LINES_H
#define DOV417_DRIVER_DEBUG_LINES_H

namespace dov417 {

// Debug lines are dropped from now on; warnings go to the standard error output, as before.
void dropDebugLines();

} // namespace dov417

#endif
