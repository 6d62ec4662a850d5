// Opens the two listening sockets, message port and upload port, and tells the person what is in
// the way. Used at start-up and whenever one of the two port fields is confirmed.
#pragma once

#include <cstdint>
#include <functional>

#include "form/form.h"
#include "net/message_connections.h"
#include "platform/message_boxes.h"
#include "share/upload_server.h"

namespace velmora {

class Listeners {
 public:
  Listeners(Form& form, MessageBoxes& boxes, MessageConnections& messages, UploadServer& uploads);

  // With equal ports none is opened; when the message listener fails the upload listener is not
  // opened either. The program goes on in both cases.
  void open();

 private:
  bool open_one(const char* which, const std::function<void()>& listen);

  Form& form_;
  MessageBoxes& boxes_;
  MessageConnections& messages_;
  UploadServer& uploads_;
  std::int16_t upload_port_ = 0;  // last opened
};

}  // namespace velmora
