#include "share/shared_file.h"

namespace velmora {
namespace {

std::string_view name_on_disk(std::string_view stored) {
  return stored.substr(0, stored.find('\1'));
}

bool same_name(std::string_view name, std::string_view requested) {
  if (requested == name) return true;
  return name.find('.') == std::string_view::npos && requested.size() == name.size() + 1 &&
         requested.back() == '.' && requested.substr(0, name.size()) == name;
}

}  // namespace

std::string path_on_disk(const SharedFile& file) {
  return file.path + "/" + std::string(name_on_disk(file.name));
}

bool names_file(const SharedFile& file, std::string_view requested_name) {
  return same_name(file.name, requested_name) || same_name(name_on_disk(file.name), requested_name);
}

}  // namespace velmora
