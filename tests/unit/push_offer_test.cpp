#include "protocol/push_offer.h"

#include <gtest/gtest.h>

#include "protocol/payloads.h"

namespace velmora {
namespace {

class NoLog : public DebugLog {
 public:
  void debug_log(std::string_view text) override { ADD_FAILURE() << text; }
};

const std::string kHex = "303132333435363738393A3B3C3D3EFF";
const std::string kServent = "0123456789:;<=>\xFF";

TEST(PushOffer, IsOneLine) {
  PushOffer offer{12, {}, "a b/c.mp3"};
  offer.servent = kServent;
  const std::string line = "GIV 12:" + kHex + "/a b/c.mp3\n\n";
  EXPECT_EQ(offer_to_str(offer), line);
  const auto read = str_to_offer(line);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->file_number, 12);
  EXPECT_EQ(std::string_view(read->servent), kServent);
  EXPECT_EQ(read->name, "a b/c.mp3");
  EXPECT_TRUE(str_to_offer("GIV 999999999:303132333435363738393a3b3c3d3eff/\n\n"));

  for (const std::string& text :
       {std::string(), std::string("GIV "), std::string("GIV \n"), std::string("GIV \n\n"),
        "GIV :" + kHex + "/n\n\n", "GIV 1000000000:" + kHex + "/n\n\n", "GIV -1:" + kHex + "/n\n\n",
        "GIV 1x:" + kHex + "/n\n\n", "GIV 1:" + kHex + "/n\n", "GIV 1:" + kHex + "\n\n",
        "GIV 1:" + kHex.substr(1) + "/n\n\n", "GIV 1:" + kHex + "0/n\n\n",
        "GIV 1:-" + kHex.substr(1) + "/n\n\n", "GIV 1:G" + kHex.substr(1) + "/n\n\n",
        "GET 1:" + kHex + "/n\n\n"}) {
    EXPECT_FALSE(str_to_offer(text)) << text;
  }
}

TEST(PushPayload, KnowsEveryPort) {
  NoLog log;
  Push push;
  push.servent = kServent;
  push.file_number = 0x010203;
  push.address = "10.0.0.9";
  push.port = 0xFFFE;
  const std::string bytes = kServent + std::string("\x03\x02\x01\0\x0A\0\0\x09\xFE\xFF", 10);
  EXPECT_EQ(push_to_str(push, log), bytes);
  const auto read = str_to_push(bytes);
  ASSERT_TRUE(read);
  EXPECT_EQ(std::string_view(read->servent), kServent);
  EXPECT_EQ(read->file_number, 0x010203);
  EXPECT_EQ(read->address, "10.0.0.9");
  EXPECT_EQ(read->port, 0xFFFE);
  EXPECT_FALSE(str_to_push(bytes.substr(1)));
  EXPECT_FALSE(str_to_push(bytes + "x"));
}

}  // namespace
}  // namespace velmora
