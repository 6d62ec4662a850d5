// Gives the files of a scan their numbers: a file that the list before knew keeps its number and
// its count of uploads, so that answers given out a minute ago still lead to it. Others fill the
// numbers that are free. There is never a gap, so a file whose number lies beyond the count of
// files gets another one.
#pragma once

#include <vector>

#include "platform/one_based.h"
#include "share/shared_file.h"

namespace velmora {

OneBased<SharedFile> numbered(std::vector<SharedFile> found, const OneBased<SharedFile>& before);

}  // namespace velmora
