#include "Tests/Support/PrivateBus.h"

#include "Platform/Foundation/FatalError.h"

#include <chrono>
#include <csignal>
#include <fstream>

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
    while (!callDaemon("GetId")) {
        if (std::chrono::steady_clock::now() > limit)
            fatalError("the private bus does not answer");
    }
}

PrivateBus::~PrivateBus() = default;

void PrivateBus::addService(const std::string& name, const std::string& commandLine) {
    std::ofstream((temporary / "services") / (name + ".service"))
        << "[D-BUS Service]\nName=" << name << "\nExec=" << commandLine << "\n";
    callDaemon("ReloadConfig");
}

std::optional<std::string> PrivateBus::call(const std::string& service, const std::string& path,
                                            const std::string& method,
                                            const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{
        "dbus-send", "--bus=" + busAddress, "--print-reply", "--dest=" + service, path, method};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const TemporaryDirectory answer;
    Process process(command, {}, answer / "output");
    return process.wait() == 0 ? std::optional(process.output()) : std::nullopt;
}

std::optional<std::string> PrivateBus::callDaemon(const std::string& method,
                                                  const std::vector<std::string>& arguments) const {
    return call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus." + method, arguments);
}

bool PrivateBus::hasOwner(const std::string& name) const {
    return callDaemon("GetNameOwner", {"string:" + name}).has_value();
}

void PrivateBus::hang() const {
    daemon->signal(SIGSTOP);
}

void PrivateBus::stop() {
    daemon->signal(SIGTERM);
    daemon->wait();
}

} // namespace velloren
