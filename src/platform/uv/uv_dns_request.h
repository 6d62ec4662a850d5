// One DNS look-up under way: a c-ares channel of its own, so that its socket, identifier and end
// belong to nothing else. Its 5 seconds are counted here, the change to TCP for a long reply
// included.
#pragma once

#include <ares.h>
#include <uv.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/dns_client.h"
#include "platform/event_loop.h"
#include "platform/uv/uv_handle.h"

namespace velmora::uv {

class UvLoop;

class UvDnsRequest : public DnsRequest {
 public:
  UvDnsRequest(UvLoop& loop, DnsClient::OnAnswer on_answer);
  ~UvDnsRequest() override;
  UvDnsRequest(const UvDnsRequest&) = delete;
  UvDnsRequest& operator=(const UvDnsRequest&) = delete;

  // Each may be called once, and only one of them.
  void answer_later(DnsAnswer answer);
  void ask(const DnsServer& server, const std::string& address, const std::string& local_address);

 private:
  struct DestroyChannel {
    void operator()(ares_channel channel) const { ares_destroy(channel); }
  };
  using Channel = std::unique_ptr<ares_channeldata, DestroyChannel>;

  bool open_channel(const DnsServer& server, const std::string& local_address);
  void watch(ares_socket_t fd, bool readable, bool writable);
  void process(ares_socket_t readable, ares_socket_t writable);
  void note_reply(int status, std::string_view reply);
  void give();

  UvLoop& loop_;
  DnsClient::OnAnswer on_answer_;
  std::string reverse_name_;
  std::optional<DnsAnswer> answer_;  // once it is known
  std::unique_ptr<Timer> deadline_;
  std::map<ares_socket_t, Handle<uv_poll_t>> polls_;
  Channel channel_;
  std::shared_ptr<int> alive_ = std::make_shared<int>();  // a posted answer looks here
};

}  // namespace velmora::uv
