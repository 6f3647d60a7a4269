#include "Tests/Support/PrivateBus.h"

#include "Platform/Foundation/FatalError.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

namespace velloren {

namespace {

constexpr auto configuration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:path=%1/bus</listen>
  <servicedir>%1/services</servicedir>
  <servicedir>/usr/share/dbus-1/services</servicedir>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

std::string withFolder(std::string text, const std::string& folder) {
    for (auto place = text.find("%1"); place != std::string::npos; place = text.find("%1"))
        text.replace(place, 2, folder);
    return text;
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
    std::filesystem::create_directory(temporary / "services");
    std::ofstream(temporary / "bus.conf") << withFolder(configuration, temporary.path());
    busAddress = "unix:path=" + (temporary / "bus").string();
    exported.emplace("DBUS_SESSION_BUS_ADDRESS", busAddress);
    daemon = std::make_unique<Process>(
        std::vector<std::string>{"dbus-daemon", "--nofork",
                                 "--config-file=" + (temporary / "bus.conf").string()},
        Process::Environment(), temporary / "bus.log");

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

void PrivateBus::stop() {
    daemon->signal(SIGTERM);
    daemon->wait();
}

} // namespace velloren
