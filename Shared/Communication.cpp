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

    void openMeetingWithId(const std::string& id) override { channel->request("openMeetingWithId", {id}); }

    void createNewMeeting() override { channel->request("createNewMeeting", {}); }

    void displaySyncing() override { channel->request("displaySyncing", {}); }

    void displayNotSyncing() override { channel->request("displayNotSyncing", {}); }

    void fetchUpcomingMeetings(MeetingsReply reply) override {
        channel->call("fetchUpcomingMeetings", {}, [reply = std::move(reply)](Value value) {
            auto* list = std::get_if<std::vector<Dictionary>>(&value);
            reply(list ? Meetings(std::move(*list)) : std::nullopt);
        });
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
    const auto plain = [&implementation](void (Communication::*operation)()) {
        return Method{0, Result::Nothing,
                      [&implementation, operation](const Arguments&, const Answer& answer) {
                          (implementation.*operation)();
                          answer({});
                      }};
    };
    const Method open{1, Result::Nothing,
                      [&implementation](const Arguments& arguments, const Answer& answer) {
                          implementation.openMeetingWithId(arguments.front());
                          answer({});
                      }};
    const Method fetch{0, Result::MeetingList, [&implementation](const Arguments&, const Answer& answer) {
                           implementation.fetchUpcomingMeetings([answer](Communication::Meetings meetings) {
                               answer(meetings ? Value(std::move(*meetings)) : Value());
                           });
                       }};
    return {communicationPath,
            communicationName,
            {{"openMeetingWithId", open},
             {"createNewMeeting", plain(&Communication::createNewMeeting)},
             {"fetchUpcomingMeetings", fetch},
             {"displaySyncing", plain(&Communication::displaySyncing)},
             {"displayNotSyncing", plain(&Communication::displayNotSyncing)}}};
}

void repeatRequest(const Connection::Undelivered& request, Communication& target) {
    const auto served = exportedCommunication(target);
    const auto method = served.methods.find(request.method);
    if (method != served.methods.end() && method->second.argumentCount == request.arguments.size())
        method->second.handler(request.arguments, [](const Value&) {});
}

} // namespace velloren
