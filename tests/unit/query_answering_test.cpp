#include "share/query_answering.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/doubles.h"

namespace velmora {
namespace {

using testing::ElementsAre;

class Replies : public ReplyChannel {
 public:
  void send_reply(std::size_t connection, std::string_view descriptor) override {
    if (closed) throw PlatformError(Errc::not_connected);
    connections.push_back(connection);
    sent.emplace_back(descriptor);
  }
  [[nodiscard]] std::string local_address() const override { return "10.0.0.9"; }
  [[nodiscard]] const std::string& servent_guid() const override { return guid; }
  void count_query_hit_sent() override { ++counted; }

  bool closed = false;
  std::string guid = "SERVENT-GUID-016";
  std::vector<std::size_t> connections;
  std::vector<std::string> sent;
  int counted = 0;
};

struct QueryAnsweringTest : testing::Test {
  void share(const std::vector<std::string>& names) {
    OneBased<SharedFile> files;
    files.resize(names.size());
    for (std::size_t i = 1; i <= names.size(); ++i) {
      files.at(i).name = names[i - 1];
      files.at(i).size = static_cast<std::int32_t>(1000 + i);
    }
    index.replace(std::move(files));
  }
  void ask(const std::string& text) { answering.send_query_reply(text, "QUERY-GUID-00016", 4); }

  // The file numbers of the one reply to the text; empty when there is none.
  std::vector<int> hits(const std::string& text) {
    replies.sent.clear();
    ask(text);
    std::vector<int> numbers;
    if (replies.sent.empty()) return numbers;
    const std::string& hit = replies.sent.front();
    std::size_t at = 23 + 11;
    for (int left = static_cast<unsigned char>(hit.at(23)); left > 0; --left) {
      numbers.push_back(static_cast<unsigned char>(hit.at(at)) +
                        256 * static_cast<unsigned char>(hit.at(at + 1)));
      at = hit.find(std::string(2, '\0'), at + 8) + 2;
    }
    EXPECT_EQ(at + 16, hit.size());
    return numbers;
  }

  SharedIndex index;
  Form form;
  Replies replies;
  Lines log;
  QueryAnswering answering{index, form, replies, log};
};

TEST_F(QueryAnsweringTest, SendsOneHitThatSaysWhoHasWhat) {
  share({"other.txt", "Blue Moon.mp3\00144100\001128000"});
  form.ttlMax_config.set_text("7");
  form.upport_config.set_text("40000");
  form.speed_config.set_text("1,000");
  ask("moon BLUE");
  using namespace std::string_literals;
  EXPECT_THAT(replies.sent, ElementsAre("QUERY-GUID-00016\x81\x07\x00\x3f\x00\x00\x00"s
                                        "\x01\x40\x9c\x0a\x00\x00\x09\xe8\x03\x00\x00"s
                                        "\x02\x00\x00\x00\xea\x03\x00\x00"
                                        "Blue Moon.mp3\00144100\001128000\x00\x00"
                                        "SERVENT-GUID-016"s));
  EXPECT_THAT(replies.connections, ElementsAre(4U));
  EXPECT_EQ(replies.counted, 1);
  EXPECT_TRUE(log.lines.empty());

  form.forceIP_config.set_text("1.2.3.4");
  ask("moon");
  EXPECT_EQ(replies.sent.back().substr(26, 4), "\1\2\3\4");
}

TEST_F(QueryAnsweringTest, MatchesEveryWordAnywhereInTheName) {
  share({"a*b.txt", "aXb.txt", "SONG.MP3\00144100\001128000", "caf\xc3\xa9 noir", ""});
  EXPECT_THAT(hits("a*b"), ElementsAre(1));
  EXPECT_THAT(hits("A B"), ElementsAre(1, 2));
  EXPECT_THAT(hits("mp3 441"), ElementsAre(3));
  EXPECT_THAT(hits("\xc3\xa9"), ElementsAre(4));
  EXPECT_THAT(hits("b  txt"), ElementsAre(1, 2));
  EXPECT_THAT(hits("t"), ElementsAre(1, 2));
  EXPECT_THAT(hits(""), ElementsAre(1, 2, 3, 4, 5));
  EXPECT_THAT(hits(" "), ElementsAre(1, 2, 3, 4, 5));
  EXPECT_THAT(hits("song mp4"), ElementsAre());
  EXPECT_EQ(replies.counted, 8);
}

TEST_F(QueryAnsweringTest, StopsAtTheLimitTestedAfterEveryFile) {
  share({"no", "yes", "yes", "yes"});
  form.query_config.set_text("2");
  EXPECT_THAT(hits("yes"), ElementsAre(2, 3));
  for (const char* none : {"", "0", "many", "-1"}) {
    form.query_config.set_text(none);
    EXPECT_THAT(hits("yes"), ElementsAre()) << none;
    EXPECT_THAT(hits("no"), ElementsAre(1)) << none;
  }
}

TEST_F(QueryAnsweringTest, AbandonsTheReplyOnAnyError) {
  share({"a b c d e f g h i j k"});
  EXPECT_THAT(hits("a b c d e f g h i j"), ElementsAre(1));
  replies.counted = 0;
  EXPECT_THAT(hits("a b c d e f g h i j k"), ElementsAre());
  form.ttlMax_config.set_text("many");
  EXPECT_THAT(hits("a"), ElementsAre());
  form.ttlMax_config.set_text("256");
  EXPECT_THAT(hits("a"), ElementsAre());
  form.ttlMax_config.set_text("5");
  replies.closed = true;
  EXPECT_THAT(hits("a"), ElementsAre());
  replies.closed = false;
  form.query_config.set_text("1000");
  share(std::vector<std::string>(256, "a"));
  EXPECT_THAT(hits("a"), ElementsAre());
  share(std::vector<std::string>(255, "a"));
  EXPECT_EQ(hits("a").size(), 255U);
  EXPECT_EQ(replies.counted, 1);
  EXPECT_THAT(
      log.lines,
      ElementsAre("Error: send_query_reply: Subscript out of range",
                  "Error: send_query_reply: Type mismatch", "Error: send_query_reply: Overflow",
                  "Error: send_query_reply: Not connected", "Error: send_query_reply: Overflow"));
}

}  // namespace
}  // namespace velmora
