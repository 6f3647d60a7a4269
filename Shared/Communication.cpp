#include "Shared/Communication.h"

#include <utility>

namespace velloren {

namespace {

using Arguments = Channel::Arguments;
using Answer = ExportedInterface::Answer;

constexpr auto communicationPath = "/com/velloren/Communication";
constexpr auto communicationName = "com.velloren.Communication";

class CommunicationProxy final : public RemoteObject, public Communication {
  public:
    explicit CommunicationProxy(std::shared_ptr<Channel> channel) : channel(std::move(channel)) {}

    void openMeetingWithId(const std::string& id, Undelivered undelivered) override {
        channel->request("openMeetingWithId", {id}, std::move(undelivered));
    }

    void createNewMeeting(Undelivered undelivered) override {
        channel->request("createNewMeeting", {}, std::move(undelivered));
    }

    void displaySyncing() override { channel->request("displaySyncing", {}, nullptr); }

    void displayNotSyncing() override { channel->request("displayNotSyncing", {}, nullptr); }

    void fetchUpcomingMeetings(MeetingsReply reply) override {
        const auto answered = [reply = std::move(reply)](Value value) {
            auto* list = std::get_if<std::vector<Dictionary>>(&value);
            reply(list ? Meetings(std::move(*list)) : std::nullopt);
        };
        channel->call("fetchUpcomingMeetings", {}, answered, limit);
    }

  private:
    std::shared_ptr<Channel> channel;
};

} // namespace

RemoteInterface communicationInterface() {
    return {communicationPath, communicationName, [](std::shared_ptr<Channel> channel) {
                return std::make_shared<CommunicationProxy>(std::move(channel));
            }};
}

ExportedInterface exportedCommunication(Communication& implementation) {
    using Method = ExportedInterface::Method;
    using Result = ExportedInterface::Result;
    const auto plain = [](auto operation) {
        return Method{0, Result::Nothing, [operation](const Arguments&, const Answer& answer) {
                          operation();
                          answer({});
                      }};
    };
    const Method open{1, Result::Nothing,
                      [&implementation](const Arguments& arguments, const Answer& answer) {
                          implementation.openMeetingWithId(arguments.front(), nullptr);
                          answer({});
                      }};
    const Method fetch{0, Result::Dictionaries, [&implementation](const Arguments&, const Answer& answer) {
                           implementation.fetchUpcomingMeetings([answer](Communication::Meetings meetings) {
                               answer(meetings ? Value(std::move(*meetings)) : Value());
                           });
                       }};
    return {communicationPath,
            communicationName,
            {{"openMeetingWithId", open},
             {"createNewMeeting", plain([&implementation] { implementation.createNewMeeting(nullptr); })},
             {"fetchUpcomingMeetings", fetch},
             {"displaySyncing", plain([&implementation] { implementation.displaySyncing(); })},
             {"displayNotSyncing", plain([&implementation] { implementation.displayNotSyncing(); })}}};
}

} // namespace velloren
