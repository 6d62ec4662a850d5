#include "app/listeners.h"

#include <string>

#include "platform/error.h"
#include "platform/number.h"

namespace velmora {

Listeners::Listeners(Form& form, MessageBoxes& boxes, MessageConnections& messages,
                     UploadServer& uploads)
    : form_(form), boxes_(boxes), messages_(messages), uploads_(uploads) {
  form_.port_config.on_enter = [this] { open(); };
  form_.upport_config.on_enter = [this] { open(); };
}

void Listeners::open() {
  form_.StatusBar.set_panel(1, "");
  const std::int16_t message_port = to_port(typed_number(form_.port_config.text()));
  const std::int16_t upload_port = to_port(typed_number(form_.upport_config.text()));
  if (message_port == upload_port) {
    form_.StatusBar.set_panel(1, "Cannot use the same port for messages and uploading!");
    return;
  }
  // The two may change places. Otherwise a message port that is taken leaves uploads as they are.
  if (message_port == upload_port_) uploads_.close_listener();
  if (open_one("Message", [&] { messages_.listen(unsigned_port(message_port)); }) &&
      open_one("Upload", [&] { uploads_.listen(unsigned_port(upload_port)); })) {
    upload_port_ = upload_port;
  }
}

bool Listeners::open_one(const char* which, const std::function<void()>& listen) {
  try {
    listen();
    return true;
  } catch (const PlatformError& error) {
    std::string text;
    if (error.code() == Errc::address_in_use) {
      text = "The " + std::string(which) +
             " port is already in use. Please run only one Gnutella application, or change the "
             "port. Incomming connections will go to the other gnutella app. Outgoing connections "
             "are still possible.";
    } else {
      text = std::to_string(error.number()) + " " + error.description();
    }
    boxes_.show(BoxIcon::information, "Oops", text);
    return false;
  }
}

}  // namespace velmora
