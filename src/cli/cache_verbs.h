// The verbs about the hosts that the servent remembers: cache, and filter for those it should not.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_cache_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
