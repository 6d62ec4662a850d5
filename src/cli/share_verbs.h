// The verbs about what this servent offers: share, scan, shared, uploads, stop.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_share_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
