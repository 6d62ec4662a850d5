// A stranger offers a file under any name and sends it as the input says: header and bytes in
// pieces, anything at all, then silence, an end, a reset; the disk fails, fills up, loses the
// folder; the person resumes. Nothing outside the folder changes, and a finished file is whole.
#include <cerrno>
#include <set>
#include <vector>

#include "fuzzed_parts.h"
#include "transfer/download_queue.h"

namespace {

using namespace velmora;
using namespace velmora::fuzz;

class NoNames : public HostNames {
 public:
  std::string dns_from_cache(const std::string&) override { return "?"; }
};

class Session {
 public:
  Session() {
    world_.add_host("10.0.0.2");
    world_.listen_raw("10.0.0.2", 6345, [this](sim::RawPeer& peer) { peers_.push_back(&peer); });
    host_.files().put("secret", "not for strangers");
    host_.files().make_folder("down");
    form_.down_config.set_text("down");
  }

  void offer(std::string_view name, float size) {
    QueryHit hit;
    hit.hits = 1;
    hit.port = 6345;
    hit.address = "10.0.0.2";
    hit.results = {{5, size, name}};
    results_.set_query_reply_view(hit);
    results_.display_query_reply();
    form_.lfound.activate(form_.lfound.rows());
  }

  void step(Input& input) {
    switch (input.byte() % 12) {
      case 0:
        offer(input.piece(), static_cast<float>(input.byte()));
        break;
      case 1:
        form_.resume_down.click();
        break;
      case 2:
        send("HTTP 200 OK\r\nServer: Velmora\r\nContent-length: " + std::to_string(input.byte()) +
             "\r\n\r\n");
        break;
      case 3:
        send("HTTP 200 OK\r\n" + std::string(input.piece()));
        break;
      case 4:
        if (!peers_.empty()) peers_.back()->close();
        break;
      case 5:
        if (!peers_.empty()) peers_.back()->reset();
        break;
      case 6:
        world_.run_for(1000 * static_cast<std::int64_t>(input.byte()));
        break;
      case 7:
        host_.files().fail_next(static_cast<int>(1 + input.byte() % 3),
                                input.byte() % 2 ? EIO : EROFS);
        break;
      case 8:
        host_.files().set_capacity(input.byte());
        break;
      case 9:
        form_.down_config.set_text(input.byte() % 2 == 0 ? "down" : "gone");
        break;
      default:
        send(input.piece());
    }
    world_.run_for(10);
    check();
  }

 private:
  void send(std::string_view bytes) {
    if (!peers_.empty()) peers_.back()->send(bytes);
  }

  // The entry, or one whose place it took, was finished with that size.
  bool finished(const DownloadRecord& entry, std::size_t size) {
    if (entry.status == "Done") sizes_.insert(entry.exact_size());
    return sizes_.contains(size);
  }

  void check() {
    require(host_.files().content("secret") == "not for strangers", "nothing else is touched");
    for (const std::string& name : host_.files().names(".")) {
      require(name == "secret", "nothing is written beside the folder");
    }
    for (const DownloadRecord& entry : downloads_.download_list()) {
      if (entry.status != "Done" || entry.state >= 1) continue;
      require(entry.bytes_received == entry.exact_size(), "Done means that all bytes came");
    }
    for (const std::string& name : host_.files().names("down")) {
      if (name.ends_with(".download")) continue;
      const auto& list = downloads_.download_list();
      const auto size = host_.files().content("down/" + name).size();
      require(std::any_of(list.begin(), list.end(),
                          [&](const DownloadRecord& e) { return finished(e, size); }),
              "a file under its final name has the size that was told");
    }
    for (std::size_t row = 1; row <= form_.ldown.rows(); ++row)
      static_cast<void>(form_.ldown.cell(row, 3));
  }

  sim::SimWorld world_;
  sim::SimHost& host_ = world_.add_host("10.0.0.1");
  Form form_;
  CountingLog log_;
  NoNames names_;
  std::vector<sim::RawPeer*> peers_;
  std::set<std::uint64_t> sizes_;
  Platform platform_ = host_.platform();
  SearchResults results_{platform_.loop, form_, log_, names_, [] {}};
  DownloadList downloads_{form_};
  DownloadClient client_{platform_.loop, platform_.network, platform_.files, form_,
                         log_,           downloads_,        "0.1.0"};
  DownloadQueue queue_{platform_.loop, platform_.files, form_, log_, results_, downloads_, client_};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Session session;
  Input input(data, size);
  session.offer(input.piece(), static_cast<float>(input.byte()));
  for (int i = 0; i < 200 && !input.empty(); ++i) session.step(input);
  return 0;
}
