// The page "Upload": the uploads that run and what limits them.
#pragma once

#include "form/control.h"

namespace velmora {

struct UploadPage {
  explicit UploadPage(ControlRegistry& registry) : form_(registry) {}

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::upload;

 public:
  ListView lupload{form_,
                   "lupload",
                   page,
                   "Uploads",
                   "DoubleClick in the list will Stop the Upload and Disconnect the Client. "
                   "The Stop message will be sent to the Client, if it's a VelMora application.",
                   {"Filename", "Size", "Status", "Location"}};
  Slider speed_upload{form_,
                      "speed_upload",
                      page,
                      "Upload speed",
                      "The delay (in milliseconds) between each packet uploaded.",
                      0,
                      2000,
                      500};
  Slider pack_upload{form_,
                     "pack_upload",
                     page,
                     "Packet size",
                     "Packet size (in bytes). Bigger will make uploads faster.",
                     1,
                     1048576,
                     4096};
  TextField max_in_upload{form_,
                          "max_in_upload",
                          page,
                          "Max uploads",
                          "The Max uploads at a time, other requests will Not be accepted.",
                          "4"};
  TextField text_upload{form_,
                        "text_upload",
                        page,
                        "Message to client your stopping",
                        "Sent to a VelMora client whose download you stop.",
                        "I'm stopping your download because...\r\n",
                        true};
  CheckBox log_upload{form_, "log_upload", page, "Log to file",
                      "Logs to a file: (Velmora_uploads.log) all upload activity."};
  Button view_log_upload{form_, "view_log_upload", page, "View log",
                         "View the log file with Notepad"};
};

}  // namespace velmora
