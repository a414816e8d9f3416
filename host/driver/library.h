// The driver library, loaded at run time and reached through its exported names only, exactly as a
// panel does it.
#ifndef DOV417_DRIVER_LIBRARY_H
#define DOV417_DRIVER_LIBRARY_H

#include <string>

#include "intf.h"
#include "protocol.h"

namespace dov417 {

// The nineteen functions of intf.h.
#define DOV417_EXPORTED_FUNCTIONS(ENTRY)                                                           \
    ENTRY(intf_getVersion)                                                                         \
    ENTRY(intf_getProtocolType)                                                                    \
    ENTRY(intf_getDriverParameter)                                                                 \
    ENTRY(intf_getDriverPropertyPage)                                                              \
    ENTRY(intf_SetDriverPropertyPage)                                                              \
    ENTRY(intf_setAddrValueChangeCallBack)                                                         \
    ENTRY(intf_initProperty)                                                                       \
    ENTRY(intf_checkAddrValidity)                                                                  \
    ENTRY(intf_checkAddr)                                                                          \
    ENTRY(intf_getRegListByType)                                                                   \
    ENTRY(intf_getRegDiscription)                                                                  \
    ENTRY(intf_multiCopy)                                                                          \
    ENTRY(intf_addrMerge)                                                                          \
    ENTRY(intf_addConditionRead)                                                                   \
    ENTRY(intf_setRcpAddress)                                                                      \
    ENTRY(intf_getSendFrame)                                                                       \
    ENTRY(intf_dealRcvFrame)                                                                       \
    ENTRY(intf_getData)                                                                            \
    ENTRY(intf_setData)

// Loaded by the constructor, unloaded by the destructor. One at a time: the library has one
// driver, whoever loads it.
class Library {
public:
    // An empty path searches: next to the executable, in the library folder that belongs to it (of
    // the build or of the installation), then where the linker looks. Throws a Failure that says
    // what was tried and why it did not do.
    explicit Library(const std::string& path = std::string());
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // The file that was loaded.
    const std::string& path() const
    {
        return path_;
    }

    // library.intf_getVersion(), and so on.
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member's name takes none
#define DOV417_MEMBER(name) decltype(&::name) name = nullptr;
    DOV417_EXPORTED_FUNCTIONS(DOV417_MEMBER)
#undef DOV417_MEMBER
    // The driver's state; read its lists with at().
    Protocol* driver = nullptr;

private:
    friend class DriverClaim;

    void* handle_ = nullptr;
    std::string path_;
    mutable bool isClaimed_ = false;
};

// The right to configure the driver and to feed it replies. There is one driver, and who configures
// it anew takes it from who polls with it: a session holds a claim as long as it lives, learning
// the areas and planning hold one while they are at it.
class DriverClaim {
public:
    // Throws a std::logic_error while there is another one.
    explicit DriverClaim(const Library& library);
    ~DriverClaim();
    DriverClaim(const DriverClaim&) = delete;
    DriverClaim& operator=(const DriverClaim&) = delete;

private:
    const Library& library_;
};

} // namespace dov417

#endif
