// The verb `watch`: a live view of the servent on one screen.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_watch_verb(CLI::App& app, Context& context);

}  // namespace velmora::cli
