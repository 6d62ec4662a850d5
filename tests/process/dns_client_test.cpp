// The DNS client against a real server, dnsmasq, on a loopback address and port of its own.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/uv/uv_dns_client.h"
#include "uv_rig.h"

namespace velmora::uv {
namespace {

const char* const kServerAddress = "127.0.0.53";

// A port that nobody has: the system's choice, given back.
std::string free_port() {
  const int fd = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  inet_pton(AF_INET, kServerAddress, &address.sin_addr);
  socklen_t size = sizeof address;
  const bool bound = bind(fd, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                     getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0;
  close(fd);
  if (!bound) throw std::runtime_error("no free port");
  return std::to_string(ntohs(address.sin_port));
}

class Dnsmasq {
 public:
  Dnsmasq() : port_(free_port()) {
    std::vector<std::string> arguments = {"dnsmasq",
                                          "--keep-in-foreground",
                                          "--conf-file=/dev/null",
                                          "--no-resolv",
                                          "--no-hosts",
                                          "--pid-file=",
                                          "--log-facility=/dev/null",
                                          "--bind-interfaces",
                                          "--port=" + port_,
                                          std::string("--listen-address=") + kServerAddress,
                                          "--local=/10.in-addr.arpa/",
                                          "--ptr-record=1.0.0.10.in-addr.arpa,one.example.net",
                                          "--ptr-record=2.0.0.10.in-addr.arpa," + long_name(),
                                          "--txt-record=3.0.0.10.in-addr.arpa,no name here",
                                          "--cname=4.0.0.10.in-addr.arpa,1.0.0.10.in-addr.arpa"};
    // Many records make a reply that is too long for a datagram.
    for (int i = 0; i < 40; ++i) {
      arguments.push_back("--ptr-record=5.0.0.10.in-addr.arpa,many" + std::to_string(i) +
                          ".example.net");
    }
    // A server that root starts would look for a user of its own.
    if (getuid() == 0) arguments.emplace_back("--user=root");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
      execv("/usr/sbin/dnsmasq", argv.data());
      _exit(127);
    }
  }
  ~Dnsmasq() { end(); }
  Dnsmasq(const Dnsmasq&) = delete;
  Dnsmasq& operator=(const Dnsmasq&) = delete;

  static std::string long_name() {
    const std::string label(60, 'n');
    return label + "." + label + "." + label + ".example";
  }
  [[nodiscard]] std::string server() const { return std::string(kServerAddress) + ":" + port_; }
  void signal(int number) const { kill(pid_, number); }
  void end() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }
  bool runs() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) != 0) pid_ = -1;
    return pid_ > 0;
  }

 private:
  std::string port_;
  pid_t pid_ = -1;
};

struct DnsClientTest : testing::Test {
  DnsAnswer ask(const std::string& server, const std::string& address) {
    std::optional<DnsAnswer> found;
    const auto request =
        client.look_up(server, address, [&](const DnsAnswer& answer) { found = answer; });
    EXPECT_FALSE(found) << "never inside the call";
    run_until(loop, [&] { return found.has_value(); });
    return found.value_or(DnsAnswer{});
  }
  // Asks until the server is up.
  bool wait_for(Dnsmasq& dnsmasq) {
    const std::int64_t deadline_ms = loop.now_ms() + kDeadlineMs;
    while (dnsmasq.runs() && loop.now_ms() < deadline_ms) {
      if (ask(dnsmasq.server(), "10.0.0.1").outcome() == DnsOutcome::name) return true;
    }
    return false;
  }

  UvLoop loop;
  UvDnsClient client{loop, "127.0.0.1"};
};

TEST_F(DnsClientTest, TellsTheOutcomesOfARealServerApart) {
  Dnsmasq dnsmasq;
  ASSERT_TRUE(wait_for(dnsmasq)) << "is dnsmasq installed?";
  const std::string server = dnsmasq.server();
  EXPECT_EQ(ask(server, "10.0.0.1").name, "one.example.net");
  EXPECT_EQ(ask(server, "10.0.0.2").name, Dnsmasq::long_name());
  EXPECT_EQ(ask(server, "10.0.0.5").name.substr(0, 4), "many");
  EXPECT_EQ(ask(server, "10.9.9.9").number, kDnsNoHost);
  EXPECT_EQ(ask(server, "10.0.0.3").number, kDnsNoRecord);
  EXPECT_EQ(ask(server, "192.0.2.1").outcome(), DnsOutcome::failed) << "it knows nobody to ask";
  EXPECT_EQ(ask("localhost", "10.0.0.1").number, kDnsBadServer);
  EXPECT_EQ(ask("", "10.0.0.1").number, kDnsBadServer);
  EXPECT_EQ(ask(server, "10.0.0").number, kDnsBadAddress);

  int answers = 0;
  std::unique_ptr<DnsRequest> kept;
  kept = client.look_up(server, "10.0.0.1", [&](const DnsAnswer&) {
    kept.reset();
    ++answers;
  });
  client.look_up(server, "10.0.0.1", [](const DnsAnswer&) { FAIL() << "let go of at once"; });
  ASSERT_TRUE(run_until(loop, [&] { return answers > 0; }));

  dnsmasq.end();
  DnsAnswer gone = ask(server, "10.0.0.1");
  // Waiting for the server may have used up the refusals that the kernel tells of in 20 ms.
  if (gone.outcome() == DnsOutcome::timed_out) gone = ask(server, "10.0.0.1");
  EXPECT_EQ(gone.number, kDnsUnreachable);
  EXPECT_EQ(gone.description, "Could not contact the DNS server");
}

TEST_F(DnsClientTest, ASilentServerIsATimeoutWhileTheLoopGoesOn) {
  Dnsmasq dnsmasq;
  ASSERT_TRUE(wait_for(dnsmasq));
  dnsmasq.signal(SIGSTOP);
  constexpr int kTickMs = 20;
  std::vector<std::int64_t> ticks;
  const auto timer = loop.make_timer(kTickMs, [&] { ticks.push_back(loop.now_ms()); });
  const std::int64_t start_ms = loop.now_ms();
  timer->set_enabled(true);
  EXPECT_EQ(ask(dnsmasq.server(), "10.0.0.1").number, kDnsTimedOut);
  const std::int64_t waited_ms = loop.now_ms() - start_ms;
  EXPECT_GE(waited_ms, kDnsTimeoutMs);
  // A busy machine may make a tick late; a loop that waits for the server makes all of them.
  const auto late = std::count_if(ticks.begin(), ticks.end(), [&](std::int64_t at) {
    return (at - start_ms) % kTickMs > kTickMs / 2;
  });
  EXPECT_GE(ticks.size(), static_cast<std::size_t>(waited_ms / kTickMs / 2));
  EXPECT_LE(late, waited_ms / kTickMs / 2);
}

}  // namespace
}  // namespace velmora::uv
