#include "tool/program.h"

int main(int argc, char** argv)
{
    return dov417::runProgram(argc, argv);
}
