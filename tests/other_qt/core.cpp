// Stands for the core library of a Qt that the tool is not built with.
extern "C" int coreOfAnotherQt();

extern "C" int coreOfAnotherQt()
{
    return 0;
}
