// The verb about the servent's behaviour: the profile Classic or Overlay, and its single switches.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_behaviour_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
