// The control socket's language: JSON-RPC 2.0, one message a line, with the form's controls as
// its whole vocabulary. It turns lines into what a person does to the form and back; it owns no
// socket and nothing of the form. Methods: controls, get, set, press, enter, remove, rows, select,
// activate, subscribe, quit. No batches.
// Texts: byte strings leave as they are if they are valid UTF-8, else each byte as the code point
// of that number. Texts that arrive are kept as UTF-8; but one that is what the field shows already
// leaves its bytes as they are, so that what "get" gave can be given back to "set" without harm.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "form/control_registry.h"
#include "platform/event_loop.h"

namespace velmora {

class ControlProtocol {
 public:
  // An answer never gets longer; a list view's rows can be asked for in parts.
  static constexpr std::size_t kMostAnswerBytes = std::size_t{32} << 20;
  static constexpr std::size_t kMostDepth = 8;  // of nested values in a message

  using SendLine = std::function<void(std::uint64_t client, std::string_view line)>;

  // `send` carries the notices of subscribers; `on_quit` runs in the turn after the answer. Both
  // are called no more once this is destroyed.
  ControlProtocol(ControlRegistry& form, EventLoop& loop, SendLine send, Handler on_quit);
  ~ControlProtocol();
  ControlProtocol(const ControlProtocol&) = delete;
  ControlProtocol& operator=(const ControlProtocol&) = delete;

  // The answer to one line; "" to a notification. Raises nothing but lack of memory. A control's
  // handler runs inside; it must not destroy this.
  std::string handle(std::uint64_t client, std::string_view line);
  void forget(std::uint64_t client);

 private:
  struct Call;    // a request that is being answered
  struct Method;  // a row of the table of methods
  struct Subscription {
    bool all = false;
    std::unordered_set<const Control*> controls;
  };

  static const std::vector<Method>& methods();
  std::string answer(const Call& call);
  Control& control_of(const Call& call) const;
  std::string controls(const Call& call);
  std::string get(const Call& call);
  std::string set(const Call& call);
  std::string press_control(const Call& call);
  std::string enter(const Call& call);
  std::string remove(const Call& call);
  std::string rows(const Call& call);
  std::string select(const Call& call);
  std::string activate(const Call& call);
  std::string subscribe(const Call& call);
  std::string quit(const Call& call);
  void on_change(Control& control);
  void tell_subscribers();

  ControlRegistry& form_;
  EventLoop& loop_;
  SendLine send_;
  Handler on_quit_;
  int watch_ = 0;  // 0 while nobody subscribes
  std::map<std::uint64_t, Subscription> subscriptions_;
  std::vector<Control*> changed_;                               // since the last notices
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  // what continuations ask
};

}  // namespace velmora
