// A settings file, damaged or planted: loaded as far as it goes, never lost, and what was loaded
// comes back after a save.
#include "app/settings.h"

#include "fuzzed_parts.h"

namespace {

// Every field as the control socket would read it.
std::string fields(const velmora::Form& form) {
  std::string all;
  for (const velmora::TextField* field :
       {&form.down_config, &form.query_config, &form.port_config, &form.dns_ser, &form.text_upload,
        &form.max_in_upload, &form.max_in_host, &form.forceIP_config}) {
    all += field->text() + '\x1F';
  }
  for (const velmora::ComboList* list : {&form.upload_config, &form.cachefilter_config}) {
    for (const std::string& item : list->items()) all += item + '\x1F';
  }
  return all + std::to_string(form.speed_upload.position()) +
         std::to_string(form.log_upload.checked());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  sim::SimWorld world;
  sim::SimHost& host = world.add_host("10.0.0.1");
  CountingLog log;
  const std::string content(reinterpret_cast<const char*>(data), size);
  host.files().put(SettingsStore::kFile, content);
  Form form;
  FilterArray filter;
  SettingsStore store(host.files());
  if (!store.load().empty()) {
    require(host.files().content("settings.toml.bad") == content, "an unusable file is kept");
  }
  if (!reads([&] { load_settings(form, store, filter); })) return 0;
  Save_settings(form, store, log);
  require(log.lines == 0, "what was loaded can be saved");
  Form again;
  SettingsStore saved(host.files());
  require(saved.load().empty(), "what was saved can be loaded");
  load_settings(again, saved, filter);
  require(fields(form) == fields(again), "and is the same");
  return 0;
}
