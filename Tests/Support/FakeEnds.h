#pragma once

#include "Shared/Communication.h"
#include "Shared/EndPointHandling.h"

namespace velloren {

/// A registry that answers at once, or keeps the questions.
class TestRegistry final : public EndPointHandling {
  public:
    std::map<std::string, Endpoint> endpoints;
    bool stores = true;
    bool withholds = false;
    std::vector<Retrieved> withheld;
    int retrievals = 0;

    void registerListenerEndpoint(const Endpoint& endpoint, const std::string& identifier,
                                  Stored stored) override {
        if (stores)
            endpoints.insert_or_assign(identifier, endpoint);
        stored(stores);
    }

    void retrieveListenerEndpoint(const std::string& identifier, Retrieved retrieved) override {
        ++retrievals;
        const auto found = endpoints.find(identifier);
        if (withholds)
            withheld.push_back(std::move(retrieved));
        else
            retrieved(found == endpoints.end() ? std::nullopt : std::optional(found->second));
    }

    void removeListenerEndpoint(const std::string& identifier) override { endpoints.erase(identifier); }
};

/// A main app that lists what it is asked, and answers at once or keeps the questions.
class TestMainApp : public Communication {
  public:
    std::vector<std::string> requests;
    Meetings meetings;
    std::vector<MeetingsReply> withheld;
    bool withholds = false;

    void openMeetingWithId(const std::string& id, Undelivered) override { requests.push_back("open " + id); }

    void createNewMeeting(Undelivered) override { requests.emplace_back("create"); }

    void fetchUpcomingMeetings(MeetingsReply reply) override {
        requests.emplace_back("fetch");
        if (withholds)
            withheld.push_back(std::move(reply));
        else
            reply(meetings);
    }

    void displaySyncing() override { requests.emplace_back("syncing"); }

    void displayNotSyncing() override { requests.emplace_back("not syncing"); }
};

} // namespace velloren
