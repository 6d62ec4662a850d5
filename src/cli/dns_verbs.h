// The verb dns: starts and stops the scan for the names of cached hosts, and tells how far it is.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_dns_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
