// The built library as a panel meets it: loaded at run time, reached by names alone.
#ifndef DOV417_TESTS_LIBRARY_H
#define DOV417_TESTS_LIBRARY_H

#include <gtest/gtest.h>
#include <string>

#include "intf.h"
#include "protocol.h"

class Library {
public:
    Library();
    ~Library(); // unloads
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // Is any library of this name in memory?
    static bool isLoaded();
    // Lines of the process's memory map that name the library's file.
    static int mappings();
    static const char* path();

    template <typename Function>
    Function* function(const char* name) const
    {
        return reinterpret_cast<Function*>(symbol(name));
    }
    Protocol& driver() const;

private:
    void* symbol(const char* name) const;

    void* handle_;
};

// The exported function of this name with the type of its declaration.
#define LOADED(library, name) ((library).function<decltype(name)>(#name))

// Keeps the planner's debug lines off the terminal while it lives.
class Quiet {
public:
    Quiet();
    ~Quiet();
};

std::string latin1(const QString& text);
QByteArray fromHex(const char* hex);
std::string toHex(const unsigned char* bytes, int length);

#endif
