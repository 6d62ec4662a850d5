// The upload log: one line for every upload that began or ended, while the user wants it. A line
// never breaks, whatever a client sent.
#pragma once

#include "form/form.h"
#include "platform/debug_log.h"
#include "platform/platform.h"
#include "share/questions.h"
#include "share/upload_slot.h"

namespace velmora {

inline constexpr const char* kUploadLogFile = "VelMora_uploads.log";

class UploadLog {
 public:
  UploadLog(const Platform& platform, Form& form, ClientNames& names, DebugLog& log);

  // Nothing unless `log_upload` is checked. Asks for the client's name while the slot has none.
  // Errors write "log_uploads " and the description.
  void log_uploads(UploadSlot& slot);

 private:
  void view();

  EventLoop& loop_;
  Files& files_;
  ProgramStarter& programs_;
  Form& form_;
  ClientNames& names_;
  DebugLog& log_;
};

}  // namespace velmora
