#include "app/servent_identifier.h"

#include <utility>

#include "platform/error.h"
#include "platform/trap.h"
#include "protocol/conversions.h"
#include "protocol/identifiers.h"

namespace velmora {
namespace {

constexpr std::size_t kMostBytes = 4096;

}  // namespace

ServentIdentifier::ServentIdentifier(std::string classic, Files& files, RandomSource& random,
                                     DebugLog& log, const Behaviour& behaviour)
    : classic_(std::move(classic)),
      files_(files),
      random_(random),
      log_(log),
      behaviour_(behaviour) {}

void ServentIdentifier::behaviour_changed() {
  if (!behaviour_.random_identifiers) return own_.clear();
  if (!own_.empty()) return;
  trap(log_, "servent_identifier: ", [&] {
    own_ = saved();
    if (!own_.empty()) return;
    own_ = random_guid(random_);
    files_.save(kIdentifierFile, guid_text(own_) + "\n");
  });
}

// Empty when there is no file or nothing in it; one that cannot be read is not replaced.
std::string ServentIdentifier::saved() const {
  try {
    return text_to_guid(files_.read_whole(kIdentifierFile, kMostBytes));
  } catch (const PlatformError& error) {
    if (error.code() == Errc::path_not_found) return {};
    throw;
  }
}

}  // namespace velmora
