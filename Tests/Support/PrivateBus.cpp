#include "Tests/Support/PrivateBus.h"

#include "Platform/Foundation/FatalError.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

namespace velloren {

namespace {

std::string configuration(const std::string& address, const std::string& services) {
    return "<busconfig><type>session</type><keep_umask/><auth>EXTERNAL</auth><listen>" + address +
           "</listen><servicedir>" + services +
           "</servicedir>"
           "<servicedir>/usr/share/dbus-1/services</servicedir>"
           "<policy context='default'><allow send_destination='*' eavesdrop='true'/>"
           "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>";
}

/// A connection that ends here; none while nobody answers.
sd_bus* connected() {
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0)
        return nullptr;
    if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping", nullptr,
                           nullptr, nullptr) < 0)
        return sd_bus_close_unref(bus);
    return bus;
}

} // namespace

PrivateBus::PrivateBus() {
    busAddress = "unix:path=" + (temporary / "bus").string();
    std::filesystem::create_directory(temporary / "services");
    std::ofstream(temporary / "bus.conf") << configuration(busAddress, temporary / "services");
    exported.emplace("DBUS_SESSION_BUS_ADDRESS", busAddress);
    const std::vector<std::string> command{"dbus-daemon", "--nofork",
                                           "--config-file=" + (temporary / "bus.conf").string()};
    daemon = std::make_unique<Process>(command, Process::Environment(), temporary / "bus.log");

    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    sd_bus* bus = nullptr;
    while (!(bus = connected())) {
        if (std::chrono::steady_clock::now() > limit)
            fatalError("the private bus does not answer");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    sd_bus_close_unref(bus);
}

PrivateBus::~PrivateBus() = default;

void PrivateBus::addService(const std::string& name, const std::string& commandLine) {
    std::ofstream((temporary / "services") / (name + ".service"))
        << "[D-BUS Service]\nName=" << name << "\nExec=" << commandLine << "\n";
    sd_bus* bus = connected();
    sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                       "ReloadConfig", nullptr, nullptr, nullptr);
    sd_bus_close_unref(bus);
}

bool PrivateBus::hasOwner(const std::string& name) const {
    sd_bus* bus = connected();
    const bool owned = sd_bus_get_name_creds(bus, name.c_str(), 0, nullptr) >= 0;
    sd_bus_close_unref(bus);
    return owned;
}

void PrivateBus::hang() const {
    daemon->signal(SIGSTOP);
}

void PrivateBus::stop() {
    daemon->signal(SIGTERM);
    daemon->wait();
}

} // namespace velloren
