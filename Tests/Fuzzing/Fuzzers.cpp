#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Foundation/Utf8.h"
#include "Platform/Link/DBus/DBusWire.h"
#include "Services/Local/LocalMeetingStore.h"
#include "Services/Local/LocalUserManager.h"
#include "Services/Local/Text.h"
#include "Shared/Communication.h"
#include "VellorenMenu/DateTexts.h"

#include <systemd/sd-bus.h>

#include <array>
#include <fstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// Hands hostile bytes to what reads from other programs, in the present folder; TARGET in the environment
/// says to what.
namespace velloren {
namespace {

using namespace std::string_literals;

void expect(bool holds, const char* what) {
    if (!holds)
        fatalError(what);
}

std::string fileWith(const std::string& name, const std::string& contents) {
    std::ofstream(name, std::ios::binary) << contents;
    return name;
}

void expectPlain(const std::optional<std::string>& text) {
    expect(isPlainText(text.value_or("")), "a text that is none");
}

int checkMessage(sd_bus_message* message, void*, sd_bus_error*) {
    const auto value = wire::valueOf(*message, Communication::limit).value_or(Value());
    if (const auto* text = std::get_if<std::string>(&value))
        expectPlain(*text);
    if (const auto* list = std::get_if<std::vector<Dictionary>>(&value)) {
        expect(list->size() <= Communication::limit.dictionaries, "too many meetings");
        for (const auto& [key, field] : list->empty() ? Dictionary() : list->back())
            expectPlain(std::holds_alternative<std::string>(field) ? std::get<std::string>(field) : key);
    }
    expect(sd_bus_message_rewind(message, 1) >= 0, "no beginning");
    for (const auto& argument : wire::textsOf(*message, 2).value_or(Channel::Arguments()))
        expectPlain(argument);
    return 0;
}

/// The answer to a call with that body; its signature is the first byte.
std::string replyWith(const std::string& body) {
    return "l\2\1\1"s + char(body.size() - 1) + char((body.size() - 1) >> 8U) + "\0\0\1\0\0\0\17\0\0\0"s +
           "\5\1u\0\1\0\0\0\10\1g\0\1"s + body.front() + "\0\0"s + body.substr(1);
}

/// What a peer says once it has let this process in: messages, or the body of one after its signature.
void replies(const std::string& bytes) {
    std::array<int, 2> ends{};
    if (bytes.empty() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()) != 0)
        return;
    const bool isStream = bytes.front() == 'l' || bytes.front() == 'B';
    const std::string said = "DATA\r\nOK 00000000000000000000000000000000\r\nAGREE_UNIX_FD\r\n" +
                             (isStream ? bytes : replyWith(bytes));
    expect(write(ends[0], said.data(), said.size()) == ssize_t(said.size()), "the socket is full");
    shutdown(ends[0], SHUT_WR);
    sd_bus* bus = nullptr;
    expect(sd_bus_new(&bus) >= 0 && sd_bus_set_fd(bus, ends[1], ends[1]) >= 0 && sd_bus_start(bus) >= 0 &&
               sd_bus_add_filter(bus, nullptr, &checkMessage, nullptr) >= 0,
           "no bus");
    while (sd_bus_process(bus, nullptr) > 0) {
    }
    sd_bus_close_unref(bus);
    close(ends[0]);
}

void startTimes(const std::string& text) {
    if (const auto date = meetingDateFormatter().dateFromString(text))
        expect(!relativeDate(*date, Date()).empty(), "no text for a date");
}

void endpoints(const std::string& address) {
    const auto endpoint = Endpoint::parse(address);
    if (!endpoint)
        return;
    const std::string& name = endpoint->socketName();
    expect(name.size() < sizeof(sockaddr_un::sun_path), "a name that is too long for a socket");
    const auto again = Endpoint::ofSocketPath(name);
    expect(name.front() == '\0' || (again && again->socketName() == name), "a path that cannot be escaped");
}

void users(const std::string& settings) {
    const std::string file = fileWith("user.ini", settings);
    const auto user = LocalUserManager(file).forceReadCurrentUserFromNSUserDefaults();
    const std::string description = user ? user->description() : "";
    expect(printableLine(description) == description, "a user in several lines");
}

void defaults(const std::string& settings) {
    const UserDefaults read(fileWith("defaults.ini", settings));
    for (const char* key : {"NSApplicationCrashOnExceptions", "group/key"}) {
        expectPlain(read.stringForKey(key));
        expect(!read.boolForKey(key) || read.stringForKey(key), "a Boolean that is not set");
    }
}

void stores(const std::string& contents) {
    LocalMeetingStore store(fileWith("meetings.sqlite3", contents), [] { return Date(); });
    for (const Meeting& meeting : store.upcomingMeetings(true, 3).value_or(NextMeetings()).first) {
        for (const auto& text : {meeting.id, meeting.title, meeting.startTime})
            expectPlain(text);
    }
}

const std::map<std::string, void (*)(const std::string&)> targets{
    {"replies", replies}, {"start-times", startTimes}, {"endpoints", endpoints},
    {"users", users},     {"defaults", defaults},      {"stores", stores}};

} // namespace
} // namespace velloren

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    static const auto target = velloren::targets.at(std::getenv("TARGET"));
    target({data, size});
    return 0;
}
