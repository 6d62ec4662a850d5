// The text of an upload request taken apart. It checks nothing against the shared files and decodes
// no escapes; whatever is missing keeps its value below. A number that no double can hold raises
// "Overflow".
#pragma once

#include <string>
#include <string_view>

namespace velmora {

struct UploadRequest {
  bool not_a_get = true;
  double file_number = 0;  // any number that a text can spell
  std::string file_name;
  std::string user_agent = " ";  // a single blank when the request names none
  double client_number = 0;      // what followed byte 1 in the user agent
  double range_start = 0;        // bytes from 0
  double range_end = 0;
};

UploadRequest parse_upload_request(std::string_view text);

}  // namespace velmora
