#include "link/network_address.h"

#include <gtest/gtest.h>

#include "complaint.h"

namespace dov417 {

namespace {

struct GoodAddress {
    const char* text;
    const char* host;
    int port;
    bool isModbusTcp = false;
};

TEST(NetworkAddress, IsHostAndPort)
{
    const GoodAddress cases[] = {{"tcp://plc:4001", "plc", 4001},
                                 {"tcp://plc.hall-3.example:1", "plc.hall-3.example", 1},
                                 {"tcp://192.168.1.5:65535", "192.168.1.5", 65535},
                                 {"tcp://[::1]:4001", "::1", 4001},
                                 {"tcp://[fe80::1%eth0]:4001", "fe80::1%eth0", 4001},
                                 {"mbtcp://plc", "plc", 502, true},
                                 {"mbtcp://[::1]", "::1", 502, true},
                                 {"mbtcp://plc:5020", "plc", 5020, true}};
    for (const GoodAddress& each : cases) {
        const std::optional<NetworkAddress> address = parseNetworkAddress(each.text);
        ASSERT_TRUE(address) << each.text;
        EXPECT_EQ(address->host, each.host);
        EXPECT_EQ(address->port, each.port);
        EXPECT_EQ(address->isModbusTcp, each.isModbusTcp);
    }
}

TEST(NetworkAddress, IsNoSerialPort)
{
    for (const char* const text : {"/dev/ttyUSB0", "ttyUSB0", "/dev/serial/by-id/usb:1", ""})
        EXPECT_FALSE(parseNetworkAddress(text)) << text;
}

TEST(NetworkAddress, ThatIsWrittenWronglySaysWhere)
{
    const std::pair<const char*, const char*> cases[] = {
        {"plc:502", "plc:502: a line over a network is tcp://HOST:PORT or mbtcp://HOST[:502]"},
        {"tcp://plc", "tcp://plc: the port number is missing, as in tcp://HOST:4001"},
        {"tcp://[::1]", "tcp://[::1]: the port number is missing, as in tcp://HOST:4001"},
        {"tcp://plc:", "tcp://plc:: '' is no port number, which goes from 1 to 65535"},
        {"tcp://plc:0", "tcp://plc:0: '0' is no port number, which goes from 1 to 65535"},
        {"tcp://plc:65536",
         "tcp://plc:65536: '65536' is no port number, which goes from 1 to 65535"},
        {"tcp://plc:99999999999999999999",
         "tcp://plc:99999999999999999999: '99999999999999999999' is no port number, which goes "
         "from 1 to 65535"},
        {"tcp://plc:4001/",
         "tcp://plc:4001/: '4001/' is no port number, which goes from 1 to 65535"},
        {"tcp://::1:4001",
         "tcp://::1:4001: an IPv6 address stands in brackets, as in tcp://[::1]:4001"},
        {"tcp://[::1:4001", "tcp://[::1:4001: the ] of the address is missing"},
        {"tcp://[::1]x:4001", "tcp://[::1]x:4001: '[::1]x' is no host; a line over a network is "
                              "tcp://HOST:PORT or mbtcp://HOST[:502]"},
        {"tcp://:4001", "tcp://:4001: '' is no host; a line over a network is tcp://HOST:PORT or "
                        "mbtcp://HOST[:502]"},
        {"tcp://",
         "tcp://: '' is no host; a line over a network is tcp://HOST:PORT or mbtcp://HOST[:502]"},
        {"tcp://me@plc:1", "tcp://me@plc:1: 'me@plc' is no host; a line over a network is "
                           "tcp://HOST:PORT or mbtcp://HOST[:502]"},
        {"mbtcp://",
         "mbtcp://: '' is no host; a line over a network is tcp://HOST:PORT or mbtcp://HOST[:502]"},
        {"mbtcp://plc:", "mbtcp://plc:: '' is no port number, which goes from 1 to 65535"},
        {"udp://plc:1",
         "udp://plc:1: a line over a network is tcp://HOST:PORT or mbtcp://HOST[:502]"}};
    for (const auto& [text, words] : cases)
        EXPECT_EQ(complaint([&, text = text] { parseNetworkAddress(text); }), words);
}

} // namespace

} // namespace dov417
