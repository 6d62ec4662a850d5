// One chunk is cut into descriptors: what a handler is given lies inside the chunk, the cutting
// always moves on, and every descriptor is counted once.
#include "protocol/framing.h"

#include "fuzzed_parts.h"

namespace {

using namespace velmora;
using namespace velmora::fuzz;

class Handlers : public DescriptorHandlers {
 public:
  explicit Handlers(std::string_view chunk) : chunk_(chunk) {}

  void count_received(std::size_t) override { ++received; }
  void got_ping(const DescriptorHeader& h, std::string_view d, std::size_t) override { cut(h, d); }
  void got_pong(const DescriptorHeader& h, std::string_view d, std::size_t) override { cut(h, d); }
  void got_query(const DescriptorHeader& h, std::string_view d, std::size_t) override { cut(h, d); }
  void got_query_reply(const DescriptorHeader& h, std::string_view d, std::size_t) override {
    cut(h, d);
  }
  void got_push(const DescriptorHeader& h, std::string_view d, std::size_t) override { cut(h, d); }
  void got_unknown(const DescriptorHeader&, std::size_t) override { ++handled; }

  std::size_t received = 0;
  std::size_t handled = 0;

 private:
  void cut(const DescriptorHeader& header, std::string_view data) {
    ++handled;
    require(data.size() >= kHeaderSize && data.data() >= chunk_.data() &&
                data.data() + data.size() == chunk_.data() + chunk_.size(),
            "a handler sees the rest of the chunk");
    require(header.payload_length >= 0 && header.payload_length <= kMaxPayloadLength &&
                header.guid == data.substr(0, kGuidSize),
            "the header is the one at the start");
  }

  std::string_view chunk_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view chunk(reinterpret_cast<const char*>(data), size);
  Handlers handlers(chunk);
  CountingLog log;
  Framing framing(handlers, log);
  std::size_t done = framing.Format_in_data(chunk, 1);
  while (done < chunk.size()) {
    const std::size_t before = handlers.received;
    const std::size_t more = framing.Format_in_data(chunk.substr(done), 1, false);
    require(more > 0, "the cutting moves on");
    require(handlers.received - before <= kDescriptorsPerTurn, "a turn is bounded");
    done += more;
  }
  require(done == chunk.size(), "no more is done than there is");
  require(handlers.received - handlers.handled <= 1, "only a bad length is not handled");
  return 0;
}
