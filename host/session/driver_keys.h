// What the session tells the driver of itself and of an address.
#ifndef DOV417_SESSION_DRIVER_KEYS_H
#define DOV417_SESSION_DRIVER_KEYS_H

#include "driver/library.h"
#include "text/addresses.h"

namespace dov417 {

constexpr int driverTag = 1;      // first property field: names this link in recipe records
constexpr int firstTicket = 1000; // above every kind that the driver itself uses

KEY_ADDRESS keyOf(const Address& address);

} // namespace dov417

#endif
