#include "protocol/pending_bytes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/wire.h"

namespace velmora {
namespace {

std::string descriptor(std::size_t length, std::size_t present) {
  return descriptor_header("g", 'g', 'g', 'g', length) + std::string(present, 'p');
}
std::string descriptor(std::size_t length) { return descriptor(length, length); }

// What a stream's chunks make of themselves, one after another at the same time.
struct Stream {
  std::string take(std::string_view chunk, std::int64_t now_ms = 0) {
    std::string joined;
    return std::string(pending.complete(chunk, now_ms, joined));
  }
  PendingBytes pending;
};

TEST(PendingBytes, HowAStreamIsCutMakesNoDifference) {
  std::mt19937 chance(7);
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    std::string sent;
    std::size_t oversized = 0;
    for (int i = 0; i < 6; ++i) {
      const std::size_t lengths[] = {0, 1, 14, 26, 300, 31'999, 32'000, 32'001, 67'000};
      const std::size_t length = lengths[chance() % std::size(lengths)];
      sent += descriptor(length);
      oversized += length > 32'000 ? 23 + length : 0;
    }
    Stream stream;
    std::string taken;
    std::size_t most_waiting = 0;
    for (std::size_t at = 0; at < sent.size();) {
      const std::size_t chunk = 1 + chance() % (chance() % 2 == 0 ? 40 : 20'000);
      taken += stream.take(std::string_view(sent).substr(at, chunk));
      at += chunk;
      most_waiting = std::max(most_waiting, std::min(at, sent.size()) - taken.size());
    }
    EXPECT_TRUE(stream.pending.in_step());
    // Only the rest of what is too long may be missing, and never its header.
    EXPECT_LE(taken.size(), sent.size());
    EXPECT_GE(taken.size() + oversized, sent.size());
    if (oversized == 0) {
      EXPECT_EQ(taken, sent);
      EXPECT_LE(most_waiting, 23U + 32'000 - 1);
    }
  }
}

TEST(PendingBytes, WhatIsTooLongIsHandedOnAndItsRestSkipped) {
  const std::string ping = descriptor(0);
  struct Case {
    std::size_t length, present;
    std::size_t taken;        // of the chunk with it and what is behind
    std::size_t still_comes;  // bytes that are skipped
  };
  const Case cases[] = {
      {32'000, 31'999, 0, 0},
      {32'001, 0, 23, 32'001},
      {32'001, 32'000, 32'023, 1},
      {32'001, 32'001, 32'024, 0},
      {67'000, 100, 123, 66'900},
      {67'001, 100, 123, 0},  // no length of any descriptor: what comes next is taken for a header
      {0xFFFFFFFF, 0, 23, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.length);
    Stream stream;
    EXPECT_EQ(stream.take(ping + descriptor(c.length, c.present)).size(), 23 + c.taken);
    EXPECT_EQ(stream.pending.in_step(), c.taken > 0 && c.still_comes == 0);
    if (c.taken == 0) continue;
    if (c.still_comes > 0) {
      EXPECT_EQ(stream.take(std::string(c.still_comes - 1, 's')), "");
      EXPECT_EQ(stream.take("s" + ping), ping);
    } else {
      EXPECT_EQ(stream.take(ping), ping);
    }
  }
}

TEST(PendingBytes, ARestThatComesTooLateIsNone) {
  const std::string ping = descriptor(0);
  const std::string pong = descriptor(14);
  for (const std::int64_t pause : {kMostPendingMs, kMostPendingMs + 1}) {
    const bool late = pause > kMostPendingMs;
    Stream stream;
    EXPECT_EQ(stream.take(pong.substr(0, 10), 500), "");
    EXPECT_EQ(stream.take(pong.substr(10, 20), 500 + pause), "");
    // The pause counts from the last bytes that came.
    EXPECT_EQ(stream.take(late ? ping : pong.substr(30), 500 + 2 * pause), late ? ping : pong);
  }
}

}  // namespace
}  // namespace velmora
