#include "share/upload_log.h"

#include <fmt/format.h>

#include "platform/trap.h"
#include "platform/visible_text.h"

namespace velmora {

UploadLog::UploadLog(const Platform& platform, Form& form, ClientNames& names, DebugLog& log)
    : loop_(platform.loop),
      files_(platform.files),
      programs_(platform.programs),
      form_(form),
      names_(names),
      log_(log) {
  form_.view_log_upload.on_click = [this] { view(); };
}

void UploadLog::log_uploads(UploadSlot& slot) {
  if (!form_.log_upload.checked()) return;
  trap(log_, "log_uploads ", [&] {
    if (slot.host_name.size() < 3) slot.host_name = names_.name_of(slot.address);
    const LocalTime now = loop_.local_time();
    const std::string line =
        fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02} {} IP:{} {} Stat:{}", now.year, now.month,
                    now.day, now.hour, now.minute, now.second, slot.file_name, slot.host_name,
                    slot.address, slot.status);
    files_.append(kUploadLogFile, escape_control_bytes(line) + "\n");
  });
}

void UploadLog::view() {
  if (!trapped("", [this] { programs_.open_text_file(kUploadLogFile); }).empty()) {
    form_.StatusBar.set_panel(1, "Can't start Notepad.exe ");
  }
}

}  // namespace velmora
