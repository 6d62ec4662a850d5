// Floods at the speed of loopback. In a test run each lasts a second and must leave the servent
// within its memory and answering; scripts/flood lets each last longer, on a machine that does
// nothing else, and then how late timers and answers may be counts as well.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "flood/flood_rig.h"
#include "support/wire.h"

namespace velmora::flood {
namespace {

#ifdef VELMORA_SANITIZED
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
constexpr double kMostMemory_mib = 256;
constexpr double kMostLate_ms = 100;
constexpr double kLongestWait_ms = 1000;
constexpr std::size_t kSongBytes = std::size_t{8} << 20;
constexpr std::size_t kChunk = std::size_t{1} << 20;

using Over = std::atomic<bool>;

// Seconds asked for by scripts/flood; 0 in a test run.
double long_seconds() {
  const char* text = std::getenv("VELMORA_FLOOD_SECONDS");
  return text == nullptr ? 0 : std::atof(text);
}

std::string query_hit(std::size_t serial) {
  std::string payload = "\xFF" + little_endian(6345, 2) + "\x01\x02\x03\x04" + little_endian(56, 4);
  for (std::size_t i = 0; i < 255; ++i) {
    payload += little_endian(i, 4) + little_endian(1000, 4) + "song " +
               std::to_string(serial * 255 + i) + std::string(95, 's') + ".mp3" +
               std::string(2, '\0');
  }
  return descriptor("hit", 129, 3, 0, payload + std::string(16, 'g'));
}

std::string pong(std::size_t serial) {
  return descriptor("pong" + std::to_string(serial), 1, 3, 0,
                    little_endian(6346, 2) + "\x20" + little_endian(serial, 3) +
                        little_endian(7, 4) + little_endian(9, 4));
}

std::string chunk_of(const std::function<std::string(std::size_t)>& make, std::size_t from) {
  std::string chunk;
  for (std::size_t serial = from; chunk.size() < kChunk; ++serial) chunk += make(serial);
  return chunk;
}

// Neighbours that send the same megabytes again and again.
void send_for_ever(FloodRig& rig, std::size_t neighbours,
                   const std::function<std::string(std::size_t)>& make) {
  for (std::size_t i = 0; i < neighbours; ++i) {
    rig.stranger([=](const Over& over) {
      const std::string chunk = chunk_of(make, i * 100'000);
      while (!over) {
        Line line(kMessagePort);
        if (!line.shake_hands()) continue;
        while (!over && line.send(chunk)) {
        }
      }
    });
  }
}

void hits(FloodRig& rig) { send_for_ever(rig, 8, query_hit); }
void pongs(FloodRig& rig) { send_for_ever(rig, 8, pong); }
void unknown_types(FloodRig& rig) {
  send_for_ever(rig, 8, [](std::size_t) { return descriptor("unknown", 2, 3, 0, ""); });
}

// Four neighbours read nothing of the queries that four others flood with.
void queries_to_slow_readers(FloodRig& rig) {
  for (int i = 0; i < 4; ++i) {
    rig.stranger([](const Over& over) {
      Line line(kMessagePort, 4096);
      line.shake_hands();
      while (!over && line.send(descriptor("still here", 64, 1, 0, std::string(26, 'p')))) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
      }
    });
  }
  send_for_ever(rig, 4, [](std::size_t serial) {
    return descriptor("query" + std::to_string(serial), 128, 3, 0,
                      little_endian(0, 2) + "song " + std::string(200, 'q') + little_endian(0, 1));
  });
}

// Requests that never end, and clients that read nothing of what they asked for.
void slow_uploads(FloodRig& rig) {
  const std::string folder = rig.folder() + "/music";
  std::filesystem::create_directory(folder);
  std::ofstream(folder + "/song.txt") << std::string(kSongBytes, 's');
  rig.ask("enter", R"({"control":"upload_config","text":")" + folder + "\"}");
  rig.ask("press", R"({"control":"scan_config"})");
  rig.stranger([](const Over& over) {
    std::vector<std::unique_ptr<Line>> lines;
    for (int i = 0; i < 900 && !over; ++i) {
      lines.push_back(std::make_unique<Line>(kUploadPort, 4096));
      lines.back()->send(i % 2 == 0 ? "GET /get/1/song.txt HTTP:/1.0\r\n\r\n" : "GET /get/1/song");
    }
    while (!over) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  });
  // One client that does read: a packet of 4096 bytes every 10 ms is its pace.
  rig.stranger([&rig](const Over& over) {
    Line line(kUploadPort);
    line.send("GET /get/1/song.txt HTTP:/1.0\r\n\r\n");
    const auto start = std::chrono::steady_clock::now();
    std::size_t bytes = 0;
    while (!over && bytes < kSongBytes) bytes += line.receive().size();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    const double kib_a_second = static_cast<double>(bytes) / 1024 / took.count();
    if (long_seconds() > 0) {
      EXPECT_GT(kib_a_second, 200) << "half of its pace";
    }
    rig.note("a good download had " + std::to_string(bytes / 1024) + " KiB in " +
             std::to_string(took.count()) + " s of 400 KiB a second");
  });
}

// Connections that end at once, and others that never say a whole handshake.
void connects(FloodRig& rig) {
  rig.stranger([](const Over& over) {
    while (!over) Line(kMessagePort).send("x");
  });
  rig.stranger([](const Over& over) {
    std::vector<std::unique_ptr<Line>> lines;
    for (std::size_t i = 0; !over; ++i) {
      if (lines.size() < 2000) {
        lines.push_back(std::make_unique<Line>(kMessagePort));
      } else {
        lines[i % lines.size()] = std::make_unique<Line>(kMessagePort);
      }
      lines.back()->send("GNUTELLA");
    }
  });
}

struct Flood {
  const char* name;
  void (*begin)(FloodRig&);
};
void PrintTo(const Flood& flood, std::ostream* out) { *out << flood.name; }

class FloodTest : public testing::TestWithParam<Flood> {};

TEST_P(FloodTest, IsOutlived) {
  if (!enter_own_network()) GTEST_SKIP() << "no network namespace to be had here";
  FloodRig rig({"speed_upload=10"});
  GetParam().begin(rig);
  const bool is_long = long_seconds() > 0;
  const Measured measured = rig.measure(is_long ? long_seconds() : 1);
  std::printf(
      "%-24s memory %6.1f MiB, timers p99 %6.1f ms, worst %6.1f ms, %zu pings, worst %.0f ms, "
      "%zu unanswered\n",
      GetParam().name, measured.memory_mib, measured.timer_p99_ms, measured.timer_worst_ms,
      measured.pings, measured.ping_worst_ms, measured.unanswered);
  // A sanitizer keeps freed memory and shadows the rest.
  if (!kSanitized) {
    EXPECT_LT(measured.memory_mib, kMostMemory_mib);
  }
  EXPECT_GT(measured.pings, 0U);
  EXPECT_EQ(measured.unanswered, 0U);
  if (!is_long) return;
  EXPECT_LT(measured.timer_p99_ms, kMostLate_ms);
  EXPECT_LT(measured.ping_worst_ms, kLongestWait_ms);
}

INSTANTIATE_TEST_SUITE_P(Floods, FloodTest,
                         testing::Values(Flood{"hits", hits}, Flood{"pongs", pongs},
                                         Flood{"unknown_types", unknown_types},
                                         Flood{"queries_to_slow_readers", queries_to_slow_readers},
                                         Flood{"slow_uploads", slow_uploads},
                                         Flood{"connects", connects}),
                         [](const auto& flood) { return flood.param.name; });

}  // namespace
}  // namespace velmora::flood
