#include "panel/program.h"

int main(int argc, char** argv)
{
    return dov417::runPanel(argc, argv);
}
