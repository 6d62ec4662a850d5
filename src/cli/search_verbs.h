// The verbs about searches: search, results.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_search_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
