// A servent on a simulated host for fuzz targets, and the reading of an input as pieces: each piece
// is a byte that says how long it is, and so many bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "app/servent.h"
#include "platform/sim/sim_world.h"

namespace velmora::sim {

struct FuzzedServent {
  FuzzedServent() : host(world.add_host("10.0.0.1")) {
    world.add_host("10.0.0.2");
    host.files().put("music/song.mp3", "\xFF\xFB\x90 and the rest of a song");
    host.files().put("music/notes.txt", "notes");
    host.files().make_folder("down");
    ServentOptions options;
    options.set = {{"down_config", "down"}, {"max_in_host", "9"}, {"speed_upload", "10"}};
    servent = std::make_unique<Servent>(host.platform(), std::move(options));
    servent->start();
    servent->form().upload_config.enter("music");
    servent->form().scan_config.click();
    world.run_for(100);
  }

  SimWorld world;
  SimHost& host;
  std::unique_ptr<Servent> servent;
};

inline std::string_view next_piece(std::string_view& input) {
  const std::size_t length =
      input.empty() ? 0 : static_cast<unsigned char>(input.front()) * std::size_t{4};
  if (!input.empty()) input.remove_prefix(1);
  const std::string_view piece = input.substr(0, std::min(length, input.size()));
  input.remove_prefix(piece.size());
  return piece;
}

}  // namespace velmora::sim
