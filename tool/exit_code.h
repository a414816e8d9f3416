// What the shell sees.
#ifndef DOV417_TOOL_EXIT_CODE_H
#define DOV417_TOOL_EXIT_CODE_H

namespace dov417 {

enum ExitCode {
    exitDone = 0,
    exitFailed = 1,   // the command ran and something it was asked for did not come out
    exitUsage = 2,    // the command line, a tag file or an address is wrong: nothing was done
    exitDifferent = 3 // what was compared is not the same
};

} // namespace dov417

#endif
