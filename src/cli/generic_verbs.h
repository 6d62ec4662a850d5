// The verbs that reach every control by its name, one for each method of the control socket.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_generic_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
