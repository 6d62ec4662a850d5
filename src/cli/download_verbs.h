// The verbs about downloads: download, resume, downloads.
#pragma once

#include "cli/context.h"

namespace velmora::cli {

void add_download_verbs(CLI::App& app, Context& context);

}  // namespace velmora::cli
