// One simulated host with the parts of a servent that share files, driven through the form.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "form/form.h"
#include "platform/sim/sim_world.h"
#include "share/shared_index.h"

namespace velmora::sim {

class ShareRig : public DebugLog {
 public:
  void debug_log(std::string_view text) override { log.emplace_back(text); }

  // Makes the list of these records; the files themselves are put by the test.
  void share(const std::vector<SharedFile>& files) {
    OneBased<SharedFile> list;
    list.resize(files.size());
    for (std::size_t i = 1; i <= files.size(); ++i) list.at(i) = files[i - 1];
    index.replace(std::move(list));
  }

  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  Form form;
  std::vector<std::string> log;
  SharedIndex index;
};

}  // namespace velmora::sim
