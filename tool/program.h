// dov417, whole: its command line, and each command by its name.
#ifndef DOV417_TOOL_PROGRAM_H
#define DOV417_TOOL_PROGRAM_H

namespace dov417 {

// Returns what the program ends with.
int runProgram(int argc, char** argv);

} // namespace dov417

#endif
