// The verbs that find hosts without naming one: auto (the automatic connector) and more (pings a
// connected host to learn of others).
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_discovery_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
