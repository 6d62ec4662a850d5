// Every kind of descriptor cut at every byte into two reads, and every pair joined into one, sent
// to a servent by a bare peer while another listens to what it forwards.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/servent.h"
#include "network_model.h"
#include "platform/sim/sim_world.h"
#include "shown_counters.h"

namespace velmora::model {
namespace {

constexpr std::int64_t kReadApart_ms = 10;
constexpr std::size_t kKinds = 7;

class DescriptorMix : public testing::Test {
 protected:
  DescriptorMix() {
    world_.record();
    world_.set_local_time({2000, 6, 30, 14, 5, 0});
    world_.add_host("10.0.0.2");
    world_.add_host("10.0.0.3");
    host_.files().put("/share/blue river.txt", std::string(1234, 'b'));
    ServentOptions options;
    options.echo_log = [this](const std::string& line) { log_.push_back(line); };
    servent_ = std::make_unique<Servent>(host_.platform(), std::move(options));
    EXPECT_EQ(servent_->start(), Servent::Started::yes);
    servent_->form().upload_config.enter("/share");
    servent_->form().scan_config.click();
    world_.run_for(100);
    log_.clear();
    sender_ = join("10.0.0.2");
    listener_ = join("10.0.0.3");
  }

  std::unique_ptr<sim::RawPeer> join(const std::string& address) {
    auto peer = world_.connect_raw(address, "10.0.0.1", 6346);
    peer->send("GNUTELLA CONNECT/0.4\n\n");
    world_.run_for(kReadApart_ms);
    EXPECT_EQ(peer->take(), "GNUTELLA OK\n\n");
    return peer;
  }

  void send(const std::string& bytes) {
    sender_->send(bytes);
    world_.run_for(kReadApart_ms);
    ++sent_reads_;
  }

  // A fresh descriptor of the kind: ping, pong, push, query, query hit, unknown, bad length.
  std::string make(std::size_t kind) {
    const std::string number = std::to_string(++made_);
    const std::string guid = "guid" + std::string(12 - number.size(), '0') + number;
    const Identity other{.address = "10.0.0.2",
                         .ttl = 3,
                         .guid = "servent-of-other",
                         .files = {{"red hill.txt", 77}, {"red lake.txt", 78}}};
    const Descriptor header{.guid = guid, .ttl = 3};
    const auto plain = [&](unsigned function, std::size_t length, std::size_t claimed) {
      Descriptor d = header;
      d.function = function;
      d.length = claimed;
      return encode(d) + std::string(length, 'p');
    };
    Lines unused;
    switch (kind) {
      case 0:
        return encode(header);
      case 1:
        return pong(other, guid);
      case 2:
        return plain(64, 26, 26);
      case 3:
        return query(other, guid, "blue river");
      case 4:
        return answer(other, guid, "red", unused);
      case 5:
        return plain(2, 7, 7);
      default:
        return plain(0, 4, 32001);
    }
  }

  // The servent's labels, rows and debug lines are those of the model.
  void compare() {
    world_.run_for(500);
    NetworkModel model({.identity = {.address = "10.0.0.1", .files = {{"blue river.txt", 1234}}},
                        .clock_at_zero_s = 14 * 3600 + 5 * 60});
    model.replay(world_.transcript(), {}, world_.now_us());
    EXPECT_THAT(model.complaints(), testing::IsEmpty());
    EXPECT_EQ(shown_labels(servent_->form()), model.labels());
    EXPECT_EQ(shown_host_counts(servent_->form()), model.host_counts());
    EXPECT_EQ(log_, model.log());
    EXPECT_FALSE(sender_->closed_by_peer());
    EXPECT_FALSE(listener_->closed_by_peer());
    std::size_t reads = 0;
    for (const sim::TranscriptEntry& entry : world_.transcript()) {
      if (entry.host == "10.0.0.1" && entry.kind == "read") ++reads;
    }
    EXPECT_EQ(reads, sent_reads_ + 2) << "a read was not delivered as it was sent";
  }

  sim::SimWorld world_;
  sim::SimHost& host_ = world_.add_host("10.0.0.1");
  Lines log_;
  std::unique_ptr<Servent> servent_;
  std::unique_ptr<sim::RawPeer> sender_;
  std::unique_ptr<sim::RawPeer> listener_;
  int made_ = 0;
  std::size_t sent_reads_ = 0;
};

TEST_F(DescriptorMix, EveryKindCutAtEveryByte) {
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    const std::size_t size = make(kind).size();
    for (std::size_t at = 1; at < size; ++at) {
      const std::string whole = make(kind);
      send(whole.substr(0, at));
      send(whole.substr(at));
    }
  }
  compare();
}

TEST_F(DescriptorMix, EveryPairInOneRead) {
  for (std::size_t first = 0; first < kKinds; ++first) {
    for (std::size_t second = 0; second < kKinds; ++second) {
      const std::string pair = make(first) + make(second);
      send(pair);
    }
  }
  compare();
  // Each kind comes first in seven pairs and second in seven, of which the one behind the bad
  // length is dropped; every bad length is a message too.
  const Form& form = servent_->form();
  EXPECT_EQ(form.net_stat.text(), "91");
  EXPECT_EQ(form.ping_stat.text(), "13 / 13");
  EXPECT_EQ(form.pong_stat.text(), "13 / 0");
  EXPECT_EQ(form.push_stat.text(), "13 / 0");
  EXPECT_EQ(form.search_stat.text(), "13 / 0");
  EXPECT_EQ(form.reply_stat.text(), "13 / 0");
  EXPECT_EQ(form.unknown_stat.text(), "13");
}

// More descriptors than one turn of the loop handles, with the end of the chunk cut.
TEST_F(DescriptorMix, LongChunk) {
  std::string chunk;
  for (std::size_t i = 0; i < 300; ++i) chunk += make(i % 6);
  send(chunk + make(4).substr(0, 40));
  compare();
  EXPECT_EQ(servent_->form().net_stat.text(), "301");
}

}  // namespace
}  // namespace velmora::model
