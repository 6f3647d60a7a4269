#pragma once

#include "Platform/Foundation/FatalError.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

namespace velloren {

/// A session bus of the test's own, which is this process's session bus for as long as it lives.
class PrivateBus {
  public:
    PrivateBus() {
        std::filesystem::create_directory(temporary / "services");
        std::ofstream(temporary / "bus.conf")
            << "<busconfig><type>session</type><keep_umask/><auth>EXTERNAL</auth><listen>" << address
            << "</listen><servicedir>" << (temporary / "services").string()
            << "</servicedir><servicedir>/usr/share/dbus-1/services</servicedir>"
               "<policy context='default'><allow send_destination='*' eavesdrop='true'/>"
               "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>";
        const std::vector<std::string> command{"dbus-daemon", "--nofork",
                                               "--config-file=" + (temporary / "bus.conf").string()};
        daemon = std::make_unique<Process>(command, Process::Environment(), temporary / "bus.log");

        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!callDaemon("GetId")) {
            if (std::chrono::steady_clock::now() > limit)
                fatalError("the private bus does not answer");
        }
    }

    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus() = default;

    [[nodiscard]] const std::filesystem::path& folder() const { return temporary.path(); }

    /// From now on the bus starts `commandLine` when the name is asked for.
    void addService(const std::string& name, const std::string& commandLine) {
        std::ofstream((temporary / "services") / (name + ".service"))
            << "[D-BUS Service]\nName=" << name << "\nExec=" << commandLine << "\n";
        callDaemon("ReloadConfig");
    }

    /// What another process that makes this call prints of the answer; none where it fails.
    std::optional<std::string> call(const std::string& service, const std::string& path,
                                    const std::string& method,
                                    const std::vector<std::string>& arguments = {}) const {
        std::vector<std::string> command{
            "dbus-send", "--bus=" + address, "--print-reply", "--dest=" + service, path, method};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const TemporaryDirectory answer;
        Process process(command, {}, answer / "output");
        return process.wait() == 0 ? std::optional(process.output()) : std::nullopt;
    }

    /// The same of the bus itself.
    std::optional<std::string> callDaemon(const std::string& method,
                                          const std::vector<std::string>& arguments = {}) const {
        return call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus." + method,
                    arguments);
    }

    /// Whether somebody has that name.
    [[nodiscard]] bool hasOwner(const std::string& name) const {
        return callDaemon("GetNameOwner", {"string:" + name}).has_value();
    }

    /// From now on the bus answers nobody.
    void hang() const { daemon->signal(SIGSTOP); }

    /// The bus goes, as at the end of a session.
    void stop() {
        daemon->signal(SIGTERM);
        daemon->wait();
    }

  private:
    TemporaryDirectory temporary;
    const std::string address = "unix:path=" + (temporary / "bus").string();
    const EnvironmentVariable exported{"DBUS_SESSION_BUS_ADDRESS", address};
    std::unique_ptr<Process> daemon;
};

} // namespace velloren
