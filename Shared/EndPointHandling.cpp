#include "Shared/EndPointHandling.h"

#include <utility>

namespace velloren {

namespace {

using Arguments = Channel::Arguments;
using Answer = ExportedInterface::Answer;

constexpr auto endPointHandlingPath = "/com/velloren/EndPointHandling";
constexpr auto endPointHandlingName = "com.velloren.EndPointHandling";

class EndPointHandlingProxy final : public RemoteObject, public EndPointHandling {
  public:
    explicit EndPointHandlingProxy(std::shared_ptr<Channel> channel) : channel(std::move(channel)) {}

    void registerListenerEndpoint(const Endpoint& endpoint, const std::string& identifier,
                                  Stored completionHandler) override {
        channel->call("registerListenerEndpoint", {endpoint.address(), identifier},
                      [completionHandler = std::move(completionHandler)](const Value& value) {
                          const bool* stored = std::get_if<bool>(&value);
                          completionHandler(stored && *stored);
                      });
    }

    void retrieveListenerEndpoint(const std::string& identifier, Retrieved completionHandler) override {
        channel->call("retrieveListenerEndpoint", {identifier},
                      [completionHandler = std::move(completionHandler)](const Value& value) {
                          const auto* address = std::get_if<std::string>(&value);
                          completionHandler(address ? Endpoint::parse(*address) : std::nullopt);
                      });
    }

    void removeListenerEndpoint(const std::string& identifier) override {
        channel->send("removeListenerEndpoint", {identifier});
    }

  private:
    std::shared_ptr<Channel> channel;
};

} // namespace

RemoteInterface endPointHandlingInterface() {
    return {endPointHandlingPath, endPointHandlingName, [](std::shared_ptr<Channel> channel) {
                return std::make_shared<EndPointHandlingProxy>(std::move(channel));
            }};
}

ExportedInterface exportedEndPointHandling(EndPointHandling& implementation) {
    using Method = ExportedInterface::Method;
    using Result = ExportedInterface::Result;
    const Method store{2, Result::Boolean,
                       [&implementation](const Arguments& arguments, const Answer& answer) {
                           const auto endpoint = Endpoint::parse(arguments[0]);
                           if (!endpoint) {
                               answer(false);
                               return;
                           }
                           implementation.registerListenerEndpoint(*endpoint, arguments[1],
                                                                   [answer](bool stored) { answer(stored); });
                       }};
    const Method retrieve{1, Result::Text,
                          [&implementation](const Arguments& arguments, const Answer& answer) {
                              implementation.retrieveListenerEndpoint(
                                  arguments[0], [answer](const std::optional<Endpoint>& endpoint) {
                                      answer(endpoint ? endpoint->address() : std::string());
                                  });
                          }};
    const Method remove{1, Result::Nothing,
                        [&implementation](const Arguments& arguments, const Answer& answer) {
                            implementation.removeListenerEndpoint(arguments[0]);
                            answer({});
                        }};
    return {endPointHandlingPath,
            endPointHandlingName,
            {{"registerListenerEndpoint", store},
             {"retrieveListenerEndpoint", retrieve},
             {"removeListenerEndpoint", remove}}};
}

} // namespace velloren
