// What several fuzz targets start from: a servent on a simulated host, a log that only counts its
// lines, and the reading of a text that may be refused with the platform's error and no other.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "app/servent.h"
#include "fuzz_input.h"
#include "platform/debug_log.h"
#include "platform/error.h"
#include "platform/sim/sim_world.h"

namespace velmora::fuzz {

inline constexpr std::string_view kHello = "GNUTELLA CONNECT/0.4\n\n";

class CountingLog : public DebugLog {
 public:
  void debug_log(std::string_view) override { ++lines; }
  std::size_t lines = 0;
};

// Whether the reading came to its end.
template <class Reader>
bool reads(Reader&& reader) {
  try {
    std::forward<Reader>(reader)();
    return true;
  } catch (const PlatformError&) {
    return false;
  }
}

// On one of the rows that are shown, if any.
inline void double_click(ListView& list, unsigned choice) {
  if (list.rows() > 0) list.activate(1 + choice % list.rows());
}

struct FuzzedServent {
  FuzzedServent() : host(world.add_host("10.0.0.1")) {
    world.add_host("10.0.0.2");
    world.add_host("10.0.0.3");
    host.files().put("music/song.mp3", "\xFF\xFB\x90 and the rest of a song");
    host.files().put("music/notes.txt", std::string(9000, 'n'));
    host.files().make_folder("down");
    ServentOptions options;
    options.set = {{"down_config", "down"}, {"max_in_host", "9"}, {"speed_upload", "10"}};
    options.echo_log = [](const std::string& line) {
      require(std::none_of(line.begin(), line.end(),
                           [](char c) { return static_cast<unsigned char>(c) < 0x20; }),
              "a logged line is one line");
    };
    servent = std::make_unique<Servent>(host.platform(), std::move(options));
    servent->start();
    form().upload_config.enter("music");
    form().scan_config.click();
    world.run_for(100);
  }
  Form& form() { return servent->form(); }

  sim::SimWorld world;
  sim::SimHost& host;
  std::unique_ptr<Servent> servent;
};

}  // namespace velmora::fuzz
