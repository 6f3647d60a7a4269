#include "Platform/Foundation/Memory.h"
#include "Shared/EndPointHandling.h"
#include "Tests/Platform/Link/DBus/LinkTest.h"
#include "Tests/Support/ProcessFigures.h"
#include "Tests/Support/Socket.h"

#include <thread>
#include <unistd.h>

/// Answers byte by byte, as no library would write them.
namespace velloren {

namespace {

using namespace std::string_literals;

/// The wire form of a message, little end first.
class Bytes {
  public:
    std::string text;

    Bytes& number(std::size_t value) {
        align(4);
        for (int shift = 0; shift < 32; shift += 8)
            text += char(value >> shift & 0xFFU);
        return *this;
    }

    Bytes& string(const std::string& value) {
        number(value.size());
        text += value + '\0';
        return *this;
    }

    Bytes& signature(const std::string& value) {
        text += char(value.size()) + value + '\0';
        return *this;
    }

    Bytes& align(std::size_t step) {
        text.resize((text.size() + step - 1) / step * step);
        return *this;
    }
};

/// The body of a list of meetings that have a title and nothing else.
std::string listOf(const std::vector<std::string>& titles) {
    Bytes body;
    body.signature("aa{sv}").number(0);
    const std::size_t start = body.text.size();
    for (const std::string& title : titles) {
        const std::size_t length = body.number(0).text.size();
        body.align(8).string("title").signature("s").string(title);
        body.text.replace(length - 4, 4, Bytes().number(body.text.size() - (length + 7) / 8 * 8).text);
    }
    return body.text.replace(start - 4, 4, Bytes().number(body.text.size() - start).text);
}

std::string listOfEmpty(std::size_t count) {
    const std::size_t length = 8 * count - 4; // each but the first is padded
    return Bytes().signature("aa{sv}").number(length).text + std::string(length, '\0');
}

std::string replyTo(const std::string& call, const std::string& signature, const std::string& body) {
    Bytes fields;
    fields.text = "\5\1u\0"s + call.substr(8, 4);
    if (!signature.empty())
        fields.text += "\10\1g\0"s + Bytes().signature(signature).text;
    Bytes message;
    message.text = "l\2\1\1"s;
    message.number(body.size()).number(1).number(fields.text.size()).text += fields.text;
    return message.align(8).text + body;
}

class OddReply : public LinkTest {
  protected:
    const std::string path = runtimeFolder / "odd.socket";
    const Socket listening{path, 8};
    std::jthread server;

    void connectTo(const std::string& signature, const std::string& body) {
        server = std::jthread([this, signature, body] {
            const Socket peer = listening.next();
            (void)peer.hear();
            peer.say("DATA\r\nOK 00000000000000000000000000000000\r\nAGREE_UNIX_FD\r\n");
            const std::string call = peer.hear();
            peer.say(replyTo(call, signature, body));
            (void)peer.hear();
        });
        connect(*Endpoint::ofSocketPath(path));
    }

    /// What arrives when a question for meetings is answered like that.
    Communication::Meetings meetingsIn(const std::string& signature, const std::string& body) {
        return answerIn<Communication::Meetings>(
            signature, body, [this](const auto& arrived) { proxy->fetchUpcomingMeetings(arrived); });
    }

    /// What arrives when a question for an endpoint is answered like that.
    std::optional<Endpoint> endpointIn(const std::string& signature, const std::string& body) {
        return answerIn<std::optional<Endpoint>>(signature, body, [this](const auto& arrived) {
            std::dynamic_pointer_cast<EndPointHandling>(connection->remoteObjectProxy())
                ->retrieveListenerEndpoint("app", arrived);
        });
    }

  private:
    template <class Answer>
    Answer answerIn(const std::string& signature, const std::string& body,
                    const std::function<void(std::function<void(Answer)>)>& ask) {
        connectTo(signature, body);
        std::optional<Answer> answer;
        ask([&](const Answer& arrived) { answer = arrived; });
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
        disconnect();
        return answer.value_or(std::nullopt);
    }
};

const std::vector<std::pair<std::string, std::string>> unreadable{
    {"v", ""},
    {"v", "\1"},
    {"v", listOf({"\xff"})},
    {"v", listOf({"a\0b"s})},
    {"v", listOf({"a", "b"}).substr(0, 40)},
    {"v", listOf({"a", "b"}).replace(8, 1, "\x7f")},
    {"v", listOf({"a", "b"}).replace(8, 1, "\x14")},
    {"v", listOfEmpty(10001)},
    {"v", listOf({std::string(Communication::limit.bytes, 'a')})},
    {"v", listOf({"a\xEF\xBF\xBE"})},
    {"v", Bytes().signature("s").number(9).text},
    {"s", ""},
    {"s", Bytes().string("\xff").text},
    {"s", Bytes().string("a\0b"s).text},
    {"s", Bytes().string(std::string(Communication::limit.bytes + 1, 'a')).text},
    {"b", ""},
    {"b", "\1"}};

} // namespace

TEST_F(OddReply, ThatCannotBeReadIsAnErrorAndNoMeetingsAndNoEndpoint) {
    for (const auto& [signature, body] : unreadable) {
        SCOPED_TRACE(signature + ": " + ::testing::PrintToString(body.substr(0, 60)));
        interface = communicationInterface();
        EXPECT_EQ(meetingsIn(signature, body), std::nullopt);
        EXPECT_EQ(errors, 1);
        interface = endPointHandlingInterface();
        EXPECT_EQ(endpointIn(signature, body), std::nullopt);
    }
    EXPECT_EQ(endpointIn("s", Bytes().string("unixexec:path=/bin/sh").text), std::nullopt);
    EXPECT_TRUE(endpointIn("s", Bytes().string("unix:path=/a").text));
}

TEST_F(OddReply, OfAnotherKindIsNoMeetings) {
    const std::string number =
        Bytes().signature("aa{sv}").number(24).number(20).string("title").signature("u").number(7).text;
    EXPECT_EQ(meetingsIn("v", number), (std::vector{Dictionary{{"title", Scalar()}}}));
    EXPECT_EQ(errors, 0);
    for (const auto& [signature, body] :
         {std::pair("v", Bytes().signature("au").number(4).number(7).text), std::pair("", std::string())}) {
        EXPECT_EQ(meetingsIn(signature, body), std::nullopt);
        EXPECT_EQ(errors, 0);
    }
}

TEST_F(OddReply, OfTheLargestKindLeavesNoMemoryTaken) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer keeps what is freed";
#endif
    keepLittleMemory(); // as the agent does
    const std::string largest = listOf(std::vector(10000, std::string(800, 'a')));
    meetingsIn("v", listOf({"a"}));
    const long before = privateMemoryOf(getpid());
    EXPECT_EQ(meetingsIn("v", largest)->size(), 10000u);
    EXPECT_EQ(meetingsIn("v", std::string(60 << 20U, 'x')), std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return privateMemoryOf(getpid()) < before + 8192; }))
        << privateMemoryOf(getpid()) << " KiB, before " << before;
}

} // namespace velloren
