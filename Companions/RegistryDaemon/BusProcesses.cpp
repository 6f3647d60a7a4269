#include "Companions/RegistryDaemon/BusProcesses.h"

#include "Platform/Link/DBus/DBusWire.h"

#include <systemd/sd-bus.h>

#include <cstdint>

namespace velloren {

namespace {

constexpr auto daemonName = "org.freedesktop.DBus";
constexpr auto daemonPath = "/org/freedesktop/DBus";

wire::Message askDaemon(sd_bus* bus, const char* method, const char* name) {
    sd_bus_message* answer = nullptr;
    if (sd_bus_call_method(bus, daemonName, daemonPath, daemonName, method, nullptr, &answer, "s", name) < 0)
        return nullptr;
    return wire::Message(answer);
}

} // namespace

BusProcesses::BusProcesses(sd_bus* bus) : bus(bus) {}

std::vector<pid_t> BusProcesses::instancesOf(const std::string& identifier) {
    std::vector<pid_t> instances;
    if (sd_bus_service_name_is_valid(identifier.c_str()) <= 0)
        return instances;
    const auto owners = askDaemon(bus, "ListQueuedOwners", identifier.c_str());
    if (!owners || sd_bus_message_enter_container(owners.get(), 'a', "s") <= 0)
        return instances;
    const char* owner = nullptr;
    while (sd_bus_message_read(owners.get(), "s", &owner) > 0) {
        if (const auto process = processOf(owner))
            instances.push_back(*process);
    }
    return instances;
}

std::optional<pid_t> BusProcesses::caller() {
    sd_bus_message* call = sd_bus_get_current_message(bus);
    const char* sender = call ? sd_bus_message_get_sender(call) : nullptr;
    return sender ? processOf(sender) : std::nullopt;
}

std::optional<pid_t> BusProcesses::processOf(const char* name) const {
    const auto answer = askDaemon(bus, "GetConnectionUnixProcessID", name);
    std::uint32_t process = 0;
    if (!answer || sd_bus_message_read(answer.get(), "u", &process) <= 0)
        return std::nullopt;
    return pid_t(process);
}

} // namespace velloren
