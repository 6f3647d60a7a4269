#include "VellorenMenu/URLs.h"

#include "Shared/VApp.h"

namespace velloren {

const std::string& URLs::rawValue(ConnectionProtocol protocol) {
    static const std::string http = "http://";
    static const std::string https = "https://";
    return protocol == ConnectionProtocol::http ? http : https;
}

std::optional<URLs::ConnectionProtocol> URLs::connectionProtocol(std::string_view text) {
    for (const auto protocol : {ConnectionProtocol::http, ConnectionProtocol::https}) {
        if (text == rawValue(protocol))
            return protocol;
    }
    return std::nullopt;
}

const std::string& URLs::helpCenterAddress() {
    static const std::string address = rawValue(ConnectionProtocol::https) + VApp::helpCenterHost();
    return address;
}

} // namespace velloren
