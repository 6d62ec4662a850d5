// Queries are matched and answered: a reply names exactly the files that hold every word, and can
// be read again.
#include "fuzzed_parts.h"
#include "protocol/payloads.h"
#include "share/query_answering.h"

namespace {

using namespace velmora;
using namespace velmora::fuzz;

class Replies : public ReplyChannel {
 public:
  void send_reply(std::size_t, std::string_view descriptor) override { sent = descriptor; }
  std::string local_address() const override { return "10.0.0.1"; }
  const std::string& servent_guid() const override { return guid_; }
  void count_query_hit_sent() override { ++counted; }

  std::string sent;
  int counted = 0;

 private:
  std::string guid_ = "0123456789abcdef";
};

std::string upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

// The plain rule: every word, cut at blanks, occurs in the name.
bool matches(const std::string& name, std::string text) {
  text += ' ';
  for (std::size_t at = 0; at + 1 < text.size();) {
    const std::size_t blank = text.find(' ', at);
    if (upper(name).find(upper(text.substr(at, blank - at))) == std::string::npos) return false;
    at = blank + 1;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  OneBased<SharedFile> files;
  for (unsigned count = input.byte() % 8; count > 0; --count) {
    files.grow_to(files.upper_bound() + 1);
    files.at(files.upper_bound()).name = input.piece();
  }
  SharedIndex index;
  index.replace(std::move(files));
  const Form form;
  Replies replies;
  CountingLog log;
  QueryAnswering answering(index, form, replies, log);
  DescriptorHeader header;
  header.payload_length = static_cast<float>(input.number() % 32001);
  const std::string descriptor = std::string(kHeaderSize, 'h') + std::string(input.rest());
  std::string text;
  if (!reads([&] { text = query_text(header, descriptor); })) return 0;
  require(text.size() + kHeaderSize <= descriptor.size(), "the text lies inside the descriptor");
  answering.send_query_reply(text, "the query's guid", 3);
  require(replies.counted == (replies.sent.empty() ? 0 : 1), "a reply is counted once");
  if (log.lines > 0) return 0;
  std::size_t expected = 0;
  const auto& shared = index.shared_files();
  for (const SharedFile& file : shared) expected += matches(file.name, text) ? 1U : 0U;
  const bool readable = std::none_of(shared.begin(), shared.end(), [](const SharedFile& file) {
    return file.name.ends_with('\0') || file.name.find(std::string("\0\0", 2)) != std::string::npos;
  });
  require(replies.sent.empty() == (expected == 0), "a match is answered, nothing else");
  if (replies.sent.empty() || !readable) return 0;
  const QueryHit hit = str_to_query_reply(str_to_header(replies.sent),
                                          std::string_view(replies.sent).substr(kHeaderSize), log);
  require(hit.results.size() == expected, "every match is in the reply");
  for (const QueryHitResult& result : hit.results) {
    require(matches(std::string(result.file_name), text), "and nothing else is");
  }
  return 0;
}
