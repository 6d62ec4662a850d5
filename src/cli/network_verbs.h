// The verbs about the servent as a whole and its message connections: status, connect, hosts,
// disconnect, counters, log, unknown.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_network_verbs(CLI::App& app, Context& context);

// How many message connections stand, by direction ("In", "Out").
std::size_t connections(const List& hosts, std::string_view direction);

}  // namespace velmora::cli
