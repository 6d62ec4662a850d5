#include "platform/trap.h"

#include <new>
#include <stdexcept>

#include "platform/error.h"

namespace velmora {

std::string description_of_current_error() {
  try {
    throw;
  } catch (const PlatformError& error) {
    return error.description();
  } catch (const std::bad_alloc&) {
    return PlatformError(Errc::out_of_memory).description();
  } catch (const std::length_error&) {
    return PlatformError(Errc::out_of_memory).description();
  } catch (const std::out_of_range&) {
    return PlatformError(Errc::subscript_out_of_range).description();
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace velmora
