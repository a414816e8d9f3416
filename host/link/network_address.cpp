#include "link/network_address.h"

#include <algorithm>
#include <cctype>

#include "line/failure.h"

namespace dov417 {

namespace {

constexpr int maxPort = 65535;
constexpr std::size_t maxPortDigits = 5;
const char* const schemeEnd = "://";
const char* const serialScheme = "tcp";
const char* const modbusScheme = "mbtcp";
constexpr int modbusPort = 502;
const char* const addressForm = "tcp://HOST:PORT or mbtcp://HOST[:502]";

int portNumber(const std::string& text, const std::string& digits)
{
    const bool isNumber =
        !digits.empty() && digits.size() <= maxPortDigits &&
        std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); });
    const int port = isNumber ? std::stoi(digits) : 0;
    if (port < 1 || port > maxPort)
        throw UsageFailure(text + ": '" + digits + "' is no port number, which goes from 1 to " +
                           std::to_string(maxPort));
    return port;
}

} // namespace

std::optional<NetworkAddress> parseNetworkAddress(const std::string& text)
{
    const std::size_t end = text.find(schemeEnd);
    // "plc:502" is no port of this machine either.
    const bool looksLikeHost =
        text.find('/') == std::string::npos && text.find(':') != std::string::npos;
    if (looksLikeHost)
        throw UsageFailure(text + ": a line over a network is " + addressForm);
    if (end == std::string::npos)
        return std::nullopt;
    NetworkAddress address;
    address.isModbusTcp = text.substr(0, end) == modbusScheme;
    if (!address.isModbusTcp && text.substr(0, end) != serialScheme)
        throw UsageFailure(text + ": a line over a network is " + addressForm);
    const std::string rest = text.substr(end + std::string(schemeEnd).size());

    // Colons stand within an IPv6 address too: it has brackets.
    const bool hasBrackets = !rest.empty() && rest.front() == '[';
    const std::size_t bracket = rest.find(']');
    if (hasBrackets && bracket == std::string::npos)
        throw UsageFailure(text + ": the ] of the address is missing");
    const std::size_t colon = rest.find(':', hasBrackets ? bracket : 0);
    if (!hasBrackets && colon != std::string::npos &&
        rest.find(':', colon + 1) != std::string::npos)
        throw UsageFailure(text + ": an IPv6 address stands in brackets, as in tcp://[::1]:4001");
    const std::string host = rest.substr(0, colon);

    address.host = hasBrackets ? host.substr(1, bracket - 1) : host;
    if (address.host.empty() || (hasBrackets && bracket + 1 != host.size()) ||
        address.host.find_first_of("/[]@ ") != std::string::npos)
        throw UsageFailure(text + ": '" + host + "' is no host; a line over a network is " +
                           addressForm);
    if (colon == std::string::npos && !address.isModbusTcp)
        throw UsageFailure(text + ": the port number is missing, as in tcp://HOST:4001");
    address.port =
        colon == std::string::npos ? modbusPort : portNumber(text, rest.substr(colon + 1));
    return address;
}

bool isModbusTcp(const std::string& text)
{
    const std::optional<NetworkAddress> address = parseNetworkAddress(text);
    return address && address->isModbusTcp;
}

} // namespace dov417
