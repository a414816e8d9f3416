// The cache as its tests look at it: units put in by hand, marks and bytes as text, and register
// types of controllers with other widths than the shipped eleven.
#ifndef DOV417_TESTS_CACHE_WORLD_H
#define DOV417_TESTS_CACHE_WORLD_H

#include "protocol/register_table.h"
#include "world.h"

// A register type of a controller whose units may be of any width.
RegisterType registerRow(const char* regName, const char* dataBits, const char* unitBits,
                         const char* timerCounter = "0");

class CacheTest : public DriverTest {
protected:
    // Appends a settled unit with the controller's bytes, and one with a host write on top of them.
    // Bytes as hex; missing ones are 0. Returns the index.
    static int put(const char* area, int address, const char* device, int station = 1);
    static int putPending(const char* area, int address, const char* device, const char* pending,
                          int station = 1);

    // Marks views of a unit that is in the cache already, or of all of them.
    static void watch(const char* area, int address, int viewFlags, unsigned int bitMonitor = 0);
    static void watchAll(int viewFlags, unsigned int bitMonitor);

    // The four bytes of a unit as hex.
    static std::string device(const char* area, int address);
    static std::string pending(const char* area, int address);
    static bool isPending(const char* area, int address);
    static unsigned int pendingBits(const char* area, int address);

    // Every record in order, "1/R 10"; with its marks: "R10 views 2", "M1 bits 0010", "T4".
    static std::vector<std::string> units();
    static std::vector<std::string> marks();

    // The records that are pending, in order: "X5 01 02 00 00".
    static std::vector<std::string> written();

    // The queue of writes, "1/R_W:100+2", and the first bytes of one of them as hex.
    static std::vector<std::string> queue();
    static std::string queuedData(int index, int count);

    // The generic operations with bytes written as hex, from and to buffers of exactly that size.
    static void store(const RegisterType& type, int address, int length, const char* bytes,
                      int station = 1);
    static std::string readRow(const RegisterType& type, int address, int length, int station = 1);
    static void settle(const RegisterType& type, int address, int length, bool accepted,
                       int station = 1);

    // Stores a write the way the named function takes it.
    static void save(const char* regName, int address, int length, const char* bytes,
                     int station = 1);
    static void settleNamed(const char* regName, int address, int length, int result,
                            int station = 1);
};

// Announces changes of the only unit in the cache, X.
class NotifierTest : public CacheTest {
protected:
    static void word(int oldValue, int newValue, int timerCounter = 0);
    static void dword(int oldValue, int newValue, int timerCounter = 0);
    static void byte(unsigned char oldValue, unsigned char newValue, int timerCounter = 0);
    static void unitWatched(int address, int viewFlags, unsigned int bitMonitor = 0);
};

using Units = std::vector<std::string>;

#endif
