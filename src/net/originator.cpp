#include "net/originator.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "protocol/conversions.h"
#include "protocol/payloads.h"

namespace velmora {
namespace {

constexpr double kMostToTell = 2'147'483'520;  // the largest single-precision number of 31 bits

// A label that shows nothing counts as 0; one that shows "--" during a scan is no number.
double shown_number(const Label& label) {
  return label.text().empty() ? 0.0 : number(label.text());
}

}  // namespace

Originator::Originator(const Identifiers& identifiers, Form& form, DebugLog& log,
                       MessageConnections& connections, RoutingTable& routes,
                       TrafficCounters& counters, SearchMemory& searches,
                       const Behaviour& behaviour)
    : identifiers_(identifiers),
      form_(form),
      log_(log),
      connections_(connections),
      routes_(routes),
      counters_(counters),
      searches_(searches),
      behaviour_(behaviour) {}

DescriptorHeader Originator::new_header(std::uint8_t function, std::string_view guid) const {
  DescriptorHeader header;
  header.guid = guid;
  header.function = function;
  header.ttl = to_byte(number(form_.ttlMax_config.text()));
  return header;
}

void Originator::send_ping(std::size_t connection) {
  trap(log_, "Error: send_ping ",
       [&] { write_ping(connection, new_header(kPing, identifiers_.next())); });
}

// A classic identifier comes again after a minute, and its second ping would not be answered.
void Originator::send_keep_alive(std::size_t connection) {
  trap(log_, "Error: send_keep_alive ", [&] {
    const std::string mark = IPdots_to_DwordStr(connections_.local_address(), log_) +
                             Word_to_Str(to_int16(static_cast<double>(connection)));
    DescriptorHeader header = new_header(kPing, identifiers_.once(mark));
    header.ttl = 1;
    write_ping(connection, header);
  });
}

void Originator::write_ping(std::size_t connection, const DescriptorHeader& header) {
  Route route{.connection = to_int16(static_cast<double>(connection)),
              .function = kPing,
              .origin_mark = kOurOwn};
  if (routes_.seen_guid(header.guid, route)) {
    log_.debug_log("Error: send_ping:  Re-Using a GUID?");
  }
  connections_.msgwrite(connection, header_to_str(header, log_));
  counters_.my_pings_out += 1;
}

void Originator::send_pong(std::size_t connection, const DescriptorHeader& ping) {
  trap(log_, "Error: send_pong ", [&] {
    DescriptorHeader header = new_header(kPong, ping.guid);
    header.payload_length = kPongLength;
    connections_.msgwrite(connection, header_to_str(header, log_) + pong_payload());
    counters_.my_pongs_out += 1;
  });
}

// Made anew when one of the texts that it is made of has changed, and when it could not be made.
const std::string& Originator::pong_payload() {
  PongSource source{.address = own_address(),
                    .port = connections_.local_port(),
                    .files = form_.sharenum_config.text(),
                    .kilobytes = form_.sharesize_config.text(),
                    .large_library = behaviour_.large_library};
  const bool good = static_cast<float>(pong_payload_.size()) == kPongLength;
  if (good && source == pong_source_) return pong_payload_;
  pong_payload_.clear();
  Pong pong;
  pong.address = source.address;
  pong.port = source.port;
  pong.files = to_single(shown_number(form_.sharenum_config));
  pong.kilobytes = to_single(total_to_tell());
  pong_payload_ = pong_to_str(pong, log_);
  pong_source_ = std::move(source);
  return pong_payload_;
}

std::string Originator::own_address() const {
  const std::string& forced = form_.forceIP_config.text();
  return forced.empty() ? connections_.local_address() : forced;
}

bool Originator::send_push(std::size_t connection, std::string_view servent,
                           std::int32_t file_number) {
  return trap(log_, "Error: send_push ", [&] {
    Push push;
    push.servent = servent;
    push.file_number = file_number;
    push.address = own_address();
    push.port = unsigned_port(to_port(typed_number(form_.upport_config.text())));
    DescriptorHeader header = new_header(kPush, identifiers_.next());
    header.payload_length = kPushLength;
    const std::string payload = push_to_str(push, log_);
    // Shorter when the address that is to be told is none; what follows would be taken for its
    // rest.
    if (static_cast<float>(payload.size()) != kPushLength) {
      throw PlatformError(Errc::type_mismatch);
    }
    connections_.msgwrite(connection, header_to_str(header, log_) + payload);
    counters_.pushes_out += 1;
  });
}

// Kept: the total is sent as it is shown, in bytes, in a field that others read as kilobytes. One
// that does not fit into the field keeps the pong from being sent, except that of a large library.
double Originator::total_to_tell() const {
  const double total = shown_number(form_.sharesize_config);
  return behaviour_.large_library ? std::min(total, kMostToTell) : total;
}

void Originator::send_query(const std::string& search_text) {
  trap(log_, "Error: send_query: ", [&] {
    DescriptorHeader header = new_header(kQuery, identifiers_.next());
    // Kept: the servent asks for hosts at least as fast as itself.
    const std::string payload = query_to_str(to_int16(val(form_.speed_config.text())), search_text);
    header.payload_length = to_single(static_cast<double>(payload.size()));
    searches_.remember_search(search_text, std::string(header.guid));
    const std::string descriptor = header_to_str(header, log_) + payload;
    bool written = false;
    for (const std::size_t i : connections_.connected_ones()) {
      trap(log_, "Error: send_query: ", [&] {
        Route route{.connection = to_int16(static_cast<double>(i)),
                    .function = kQuery,
                    .origin_mark = kOurOwn};
        // Kept: the first connection enters the identifier, so every further one finds it.
        if (routes_.seen_guid(header.guid, route)) {
          log_.debug_log("Send_query:  Re-Using a GUID?");
        }
        connections_.msgwrite(i, descriptor);
        counters_.queries_sent += 1;
        written = true;
      });
    }
    form_.StatusBar.set_panel(
        1, written ? "Sent Query, waiting for replies..." : "No Connections to send query!");
  });
}

}  // namespace velmora
