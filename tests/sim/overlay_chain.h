// Three servents in a row, each connected to the next; the last one shares /share/song.txt. Each
// has its own switches.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/servent.h"
#include "platform/sim/sim_world.h"

namespace velmora::sim {

struct OverlayChain {
  using Fields = std::vector<std::pair<std::string, std::string>>;
  static constexpr std::size_t kSongSize = 20'000;

  explicit OverlayChain(const std::array<Fields, 3>& fields) {
    for (std::size_t i = 0; i < servents.size(); ++i) {
      const std::string address = "1.0.0." + std::to_string(i + 1);
      hosts[i] = &world.add_host(address);
      hosts[i]->files().make_folder("/down");
      hosts[i]->files().make_folder("/share");
      if (i == 2) hosts[i]->files().put("/share/song.txt", std::string(kSongSize, 's'));
      ServentOptions options;
      options.set = fields[i];
      for (const auto& [name, value] :
           Fields{{"max_in_host", "20"}, {"ttlMax_config", "5"}, {"down_config", "/down"}}) {
        options.set.emplace_back(name, value);
      }
      servents[i] = std::make_unique<Servent>(hosts[i]->platform(), std::move(options));
      servents[i]->start();
      form(i).upload_config.enter("/share");
      form(i).scan_config.click();
      world.run_for(1000);  // identifiers of servents are made of the second
    }
    form(0).new_host.enter("1.0.0.2");
    form(1).new_host.enter("1.0.0.3");
    world.run_for(100);
  }

  Form& form(std::size_t i) { return servents[i]->form(); }

  // The first servent searches; how many results each of the first two has then.
  std::pair<std::string, std::string> search(const std::string& text) {
    form(0).Tsearch.enter(text);
    world.run_for(1500);
    return {form(0).totalsearch.text(), form(1).totalsearch.text()};
  }

  SimWorld world;
  std::array<SimHost*, 3> hosts{};
  std::array<std::unique_ptr<Servent>, 3> servents;
};

}  // namespace velmora::sim
