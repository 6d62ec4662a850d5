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
  Call(const UvBus& bus, const char* path, const char* interface, const char* member)
      : bus_(bus), library_(bus.library()) {
    library_.message_new_method_call(bus.native(), &message_, kAvahi, path, interface, member);
    if (message_ != nullptr) library_.message_set_auto_start(message_, 0);
  }
  ~Call() { library_.message_unref(message_); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  template <class... Arguments>
  Call& with(const char* types, Arguments... arguments) {
    if (message_ != nullptr) library_.message_append(message_, types, arguments...);
    return *this;
  }
  // The answer goes to `handler` with `owner`.
  bool send(sd_bus_message_handler_t handler, void* owner) {
    return message_ != nullptr &&
           library_.call_async(bus_.native(), nullptr, message_, handler, owner, kAnswer_us) >= 0;
  }

 private:
  const UvBus& bus_;
  const BusLibrary& library_;
  sd_bus_message* message_ = nullptr;
};

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
  bus_ = std::make_unique<UvBus>(loop_, [this] { look_again_->set_enabled(true); });
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
  bus_->library().match_signal_async(
      bus_->native(), nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
      "org.freedesktop.DBus", "NameOwnerChanged",
      [](sd_bus_message* change, void* owner, sd_bus_error*) noexcept {
        const char* name = "";
        auto* self = static_cast<UvLocalServices*>(owner);
        self->bus_->library().message_read(change, "s", &name);
        if (std::string_view(name) == kAvahi) self->look_again_->set_enabled(true);
        return 0;
      },
      nullptr, this);
  bus_->library().match_signal_async(
      bus_->native(), nullptr, kAvahi, nullptr, kBrowser, "ItemNew",
      [](sd_bus_message* item, void* owner, sd_bus_error*) noexcept {
        static_cast<UvLocalServices*>(owner)->found(item);
        return 0;
      },
      nullptr, this);
  Call(*bus_, "/", kServer, "EntryGroupNew")
      .send(
          [](sd_bus_message* reply, void* owner, sd_bus_error*) noexcept {
            auto* self = static_cast<UvLocalServices*>(owner);
            const char* group = nullptr;
            if (self->failed(reply)) return 0;
            if (self->bus_->library().message_read(reply, "o", &group) < 0) return 0;
            self->look_again_->set_enabled(false);
            self->announce(group);
            self->browse();
            return 0;
          },
          this);
}

bool UvLocalServices::failed(sd_bus_message* reply) const {
  return bus_->library().message_is_method_error(reply, nullptr) > 0;
}

void UvLocalServices::announce(const char* group) {
  const auto ignored = [](sd_bus_message*, void*, sd_bus_error*) noexcept { return 0; };
  Call(*bus_, group, kGroup, "AddService")
      .with("iiussssqaay", kAnyInterface, kIpv4, std::uint32_t{0}, name_.c_str(), kType, "", "",
            static_cast<int>(port_), 0)
      .send(ignored, this);
  Call(*bus_, group, kGroup, "Commit").send(ignored, this);
}

void UvLocalServices::browse() {
  Call(*bus_, "/", kServer, "ServiceBrowserNew")
      .with("iissu", kAnyInterface, kIpv4, kType, "", std::uint32_t{0})
      .send([](sd_bus_message*, void*, sd_bus_error*) noexcept { return 0; }, this);
}

void UvLocalServices::found(sd_bus_message* item) {
  int interface = 0;
  int protocol = 0;
  std::uint32_t flags = 0;
  const char* name = nullptr;
  const char* type = nullptr;
  const char* domain = nullptr;
  if (bus_->library().message_read(item, "iisssu", &interface, &protocol, &name, &type, &domain,
                                   &flags) < 0) {
    return;
  }
  if ((flags & kOurOwn) != 0 || resolving_ >= kMostResolving) return;
  const bool asked =
      Call(*bus_, "/", kServer, "ResolveService")
          .with("iisssiu", interface, protocol, name, type, domain, kIpv4, std::uint32_t{0})
          .send(
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
  if (failed(reply) ||
      bus_->library().message_read(reply, "iissssisq", &number, &number, &text, &text, &text, &text,
                                   &number, &address, &port) < 0) {
    return;
  }
  // From a turn of its own: who is told may stop this, and with it the connection to the bus.
  loop_.post([this, alive = std::weak_ptr<int>(alive_), service = LocalService{address, port}] {
    if (!alive.expired() && events_ != nullptr) events_->on_found(service);
  });
}

}  // namespace velmora::uv
