#include "platform/uv/uv_local_services.h"

#include <string_view>
#include <utility>

namespace velmora::uv {
namespace {

constexpr const char* kAvahi = "org.freedesktop.Avahi";
constexpr const char* kServer = "org.freedesktop.Avahi.Server";
constexpr const char* kGroup = "org.freedesktop.Avahi.EntryGroup";
constexpr const char* kBrowser = "org.freedesktop.Avahi.ServiceBrowser";
constexpr const char* kType = "_gnutella._tcp";
constexpr int kAnyInterface = -1;
constexpr int kIpv4 = 0;
constexpr std::uint32_t kOurOwn = 16;  // among the flags of a found service
constexpr std::uint64_t kAnswer_us = 10'000'000;
constexpr int kLookAgain_ms = 60'000;

// A message that goes when this does. What the library refuses is found out at the send.
class Call {
 public:
  Call(sd_bus* bus, const char* path, const char* interface, const char* member) {
    sd_bus_message_new_method_call(bus, &message_, kAvahi, path, interface, member);
    if (message_ != nullptr) sd_bus_message_set_auto_start(message_, 0);
  }
  ~Call() { sd_bus_message_unref(message_); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  template <class... Arguments>
  Call& with(const char* types, Arguments... arguments) {
    if (message_ != nullptr) sd_bus_message_append(message_, types, arguments...);
    return *this;
  }
  // The answer goes to `handler` with `owner`.
  bool send(sd_bus* bus, sd_bus_message_handler_t handler, void* owner) {
    return message_ != nullptr &&
           sd_bus_call_async(bus, nullptr, message_, handler, owner, kAnswer_us) >= 0;
  }

 private:
  sd_bus_message* message_ = nullptr;
};

bool failed(sd_bus_message* reply) { return sd_bus_message_is_method_error(reply, nullptr) > 0; }

}  // namespace

UvLocalServices::UvLocalServices(UvLoop& loop)
    : loop_(loop), look_again_(loop.make_timer(kLookAgain_ms, [this] { begin(); })) {}

void UvLocalServices::start(const std::string& name, std::uint16_t port,
                            LocalServicesEvents& events) {
  stop();
  name_ = name;
  port_ = port;
  events_ = &events;
  begin();
}

void UvLocalServices::stop() {
  events_ = nullptr;
  end();
}

// With the connection Avahi drops what this program announced and asked for.
void UvLocalServices::end() {
  look_again_->set_enabled(false);
  bus_.reset();
  resolving_ = 0;
}

void UvLocalServices::begin() {
  end();
  look_again_->set_enabled(true);
  bus_ = std::make_unique<UvBus>(loop_, [] {});
  try {
    bus_->open();
  } catch (const PlatformError&) {
    return;
  }
  ask_for_group();
  bus_->pump();
}

// The first question shows whether Avahi runs; while it does, nothing has to be looked at again
// until it goes.
void UvLocalServices::ask_for_group() {
  sd_bus_match_signal_async(
      bus_->native(), nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
      "org.freedesktop.DBus", "NameOwnerChanged",
      [](sd_bus_message* change, void* owner, sd_bus_error*) noexcept {
        const char* name = "";
        sd_bus_message_read(change, "s", &name);
        auto* self = static_cast<UvLocalServices*>(owner);
        if (std::string_view(name) == kAvahi) self->look_again_->set_enabled(true);
        return 0;
      },
      nullptr, this);
  sd_bus_match_signal_async(
      bus_->native(), nullptr, kAvahi, nullptr, kBrowser, "ItemNew",
      [](sd_bus_message* item, void* owner, sd_bus_error*) noexcept {
        static_cast<UvLocalServices*>(owner)->found(item);
        return 0;
      },
      nullptr, this);
  Call(bus_->native(), "/", kServer, "EntryGroupNew")
      .send(
          bus_->native(),
          [](sd_bus_message* reply, void* owner, sd_bus_error*) noexcept {
            const char* group = nullptr;
            if (failed(reply) || sd_bus_message_read(reply, "o", &group) < 0) return 0;
            auto* self = static_cast<UvLocalServices*>(owner);
            self->look_again_->set_enabled(false);
            self->announce(group);
            self->browse();
            return 0;
          },
          this);
}

void UvLocalServices::announce(const char* group) {
  const auto ignored = [](sd_bus_message*, void*, sd_bus_error*) noexcept { return 0; };
  sd_bus* bus = bus_->native();
  Call(bus, group, kGroup, "AddService")
      .with("iiussssqaay", kAnyInterface, kIpv4, std::uint32_t{0}, name_.c_str(), kType, "", "",
            static_cast<int>(port_), 0)
      .send(bus, ignored, this);
  Call(bus, group, kGroup, "Commit").send(bus, ignored, this);
}

void UvLocalServices::browse() {
  sd_bus* bus = bus_->native();
  Call(bus, "/", kServer, "ServiceBrowserNew")
      .with("iissu", kAnyInterface, kIpv4, kType, "", std::uint32_t{0})
      .send(
          bus, [](sd_bus_message*, void*, sd_bus_error*) noexcept { return 0; }, this);
}

void UvLocalServices::found(sd_bus_message* item) {
  int interface = 0;
  int protocol = 0;
  std::uint32_t flags = 0;
  const char* name = nullptr;
  const char* type = nullptr;
  const char* domain = nullptr;
  if (sd_bus_message_read(item, "iisssu", &interface, &protocol, &name, &type, &domain, &flags) <
      0) {
    return;
  }
  if ((flags & kOurOwn) != 0 || resolving_ >= kMostResolving) return;
  sd_bus* bus = bus_->native();
  const bool asked =
      Call(bus, "/", kServer, "ResolveService")
          .with("iisssiu", interface, protocol, name, type, domain, kIpv4, std::uint32_t{0})
          .send(
              bus,
              [](sd_bus_message* reply, void* owner, sd_bus_error*) noexcept {
                static_cast<UvLocalServices*>(owner)->resolved(reply);
                return 0;
              },
              this);
  if (asked) ++resolving_;
}

void UvLocalServices::resolved(sd_bus_message* reply) {
  --resolving_;
  int number = 0;
  const char* text = nullptr;
  const char* address = nullptr;
  std::uint16_t port = 0;
  if (failed(reply) || sd_bus_message_read(reply, "iissssisq", &number, &number, &text, &text,
                                           &text, &text, &number, &address, &port) < 0) {
    return;
  }
  // From a turn of its own: who is told may stop this, and with it the connection to the bus.
  loop_.post([this, alive = std::weak_ptr<int>(alive_), service = LocalService{address, port}] {
    if (!alive.expired() && events_ != nullptr) events_->on_found(service);
  });
}

}  // namespace velmora::uv
