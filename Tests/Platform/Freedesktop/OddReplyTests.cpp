#include "Platform/Freedesktop/Bus/MessageSieve.h"
#include "Shared/EndPointHandling.h"
#include "Tests/Platform/Freedesktop/LinkTest.h"
#include "Tests/Support/ProcessFigures.h"
#include "Tests/Support/Socket.h"

#include <gmock/gmock.h>

#include <thread>
#include <unistd.h>

/// Answers byte by byte, as no library would write them.
namespace velloren {

namespace {

using ::testing::ElementsAre;
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
    std::vector<Communication::Meetings> meetingsIn(const std::string& signature, const std::string& body) {
        connectTo(signature, body);
        std::vector<Communication::Meetings> answers;
        std::atomic<int> count = 0;
        proxy->fetchUpcomingMeetings([&](const auto& meetings) {
            answers.push_back(meetings);
            ++count;
        });
        EXPECT_TRUE(waitUntil([&] { return count == 1; }));
        disconnect();
        return answers;
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
    {"v", listOfEmpty(MessageSieve::largestBody / 8 + 1)},
    {"v", Bytes().signature("s").number(9).text},
    {"s", ""},
    {"s", Bytes().number(1).text},
    {"s", Bytes().string("\xff").text},
    {"s", Bytes().string("a\0b"s).text},
    {"s", Bytes().string(std::string(100000, 'a')).text},
    {"b", ""},
    {"b", "\1"},
};

} // namespace

TEST_F(OddReply, ThatCannotBeReadIsAnErrorAndNoMeetings) {
    for (const auto& [signature, body] : unreadable) {
        SCOPED_TRACE(signature + ": " + ::testing::PrintToString(body.substr(0, 60)));
        EXPECT_THAT(meetingsIn(signature, body), ElementsAre(std::nullopt));
        EXPECT_EQ(errors, 1);
    }
}

TEST_F(OddReply, OfAnotherKindIsNoMeetings) {
    const std::string numbers = Bytes().signature("au").number(4).number(7).text;
    for (const auto& [signature, body] :
         {std::pair("v"s, numbers), std::pair("s"s, Bytes().string("text").text), std::pair(""s, ""s)}) {
        EXPECT_THAT(meetingsIn(signature, body), ElementsAre(std::nullopt));
        EXPECT_EQ(errors, 0);
    }
}

TEST_F(OddReply, ThatCannotBeReadIsNoEndpoint) {
    interface = endPointHandlingInterface();
    for (const auto& [signature, body] : unreadable) {
        connectTo(signature, body);
        const auto registry = std::dynamic_pointer_cast<EndPointHandling>(connection->remoteObjectProxy());
        std::optional<Endpoint> found = listener->endpoint();
        std::atomic<bool> answered = false;
        registry->retrieveListenerEndpoint("app", [&](const auto& answer) {
            found = answer;
            answered = true;
        });
        EXPECT_TRUE(waitUntil([&] { return answered.load(); }))
            << ::testing::PrintToString(body.substr(0, 60));
        EXPECT_EQ(found, std::nullopt);
        disconnect();
    }
}

TEST_F(OddReply, WithCharactersThatSdBusRefusesCostsThoseAlone) {
    const std::string last = "\xEF\xBF\xBD";
    const auto answers = meetingsIn("v", listOf({"a\xEF\xBF\xBE"
                                                 "b",
                                                 "\xEF\xB7\x90", "\xF0\x9F\xBF\xBF", "\xEF\xBF\xBC"}));
    ASSERT_TRUE(answers.at(0));
    std::vector<std::string> titles;
    for (const Dictionary& meeting : *answers[0])
        titles.push_back(std::get<std::string>(meeting.at("title")));
    EXPECT_THAT(titles, ElementsAre("a" + last + "b", last, "\xF0\x9F\xBF\xBD", "\xEF\xBF\xBC"));
    EXPECT_EQ(errors, 0);
}

TEST_F(OddReply, OfTheLargestKindLeavesNoMemoryTaken) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers keep what is freed";
#endif
    const std::string title(1500, 'a');
    const std::string largest = listOf(std::vector(10000, title));
    meetingsIn("v", listOf({"a"}));
    const long before = privateMemoryOf(getpid());
    EXPECT_EQ(meetingsIn("v", largest).at(0)->size(), 10000u);
    EXPECT_EQ(meetingsIn("v", std::string(60 << 20U, 'x')).at(0), std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return privateMemoryOf(getpid()) < before + 8192; }))
        << privateMemoryOf(getpid()) << " KiB, before " << before;
}

TEST(MessageSieve, LetsTheSamePassHoweverItArrives) {
    const std::string call = std::string(12, '\1');
    const std::string oversized = replyTo(call, "v", std::string(MessageSieve::largestBody + 1, 'x'));
    const std::string stream = "DATA\r\nOK l\r\nAGREE_UNIX_FD\r\n" +
                               replyTo(call, "v", listOf({"\xEF\xBF\xBF", "\xF3\xAF\xBF\xBE"})) +
                               replyTo(call, "", "") + oversized + replyTo(call, "s", "\xEF\xB7\xAF");
    const std::string expected = "DATA\r\nOK l\r\nAGREE_UNIX_FD\r\n" +
                                 replyTo(call, "v", listOf({"\xEF\xBF\xBD", "\xF3\xAF\xBF\xBD"})) +
                                 replyTo(call, "", "") + replyTo(call, "v", "") +
                                 replyTo(call, "s", "\xEF\xBF\xBD");
    for (const std::size_t step : {std::size_t(1), std::size_t(7), stream.size()}) {
        MessageSieve sieve;
        std::string fit;
        for (std::size_t start = 0; start < stream.size(); start += step)
            ASSERT_TRUE(sieve.add(std::string_view(stream).substr(start, step), fit));
        EXPECT_TRUE(fit == expected) << "in steps of " << step;
    }
    std::string fit;
    EXPECT_FALSE(MessageSieve().add("l\2\1\1"s + std::string(12, '\x7f'), fit)) << "a header without end";
}

} // namespace velloren
