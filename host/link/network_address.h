// Where a line over a network leads, as people write it: "tcp://HOST:PORT", a serial line behind a
// device server, or "mbtcp://HOST[:PORT]", Modbus TCP.
#ifndef DOV417_LINK_NETWORK_ADDRESS_H
#define DOV417_LINK_NETWORK_ADDRESS_H

#include <optional>
#include <string>

namespace dov417 {

struct NetworkAddress {
    bool isModbusTcp = false;
    std::string host; // a name, or an address without brackets
    int port = 0;
};

// Nothing for a serial port. Throws a UsageFailure where it looks like one of the network and is
// none.
std::optional<NetworkAddress> parseNetworkAddress(const std::string& text);

bool isModbusTcp(const std::string& text);

} // namespace dov417

#endif
