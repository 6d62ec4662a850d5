#include "app/settings.h"

#include <fmt/format.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

// Kept on purpose: a longer list is saved whole but comes back with its first 100 entries only.
constexpr int kMostLoaded = 100;

// Every setting in the order in which it is loaded and saved; a failure ends either one here.
template <class Pass, class AnyForm>
void carry(Pass& pass, AnyForm& form) {
  pass("config", "downpath", form.down_config);
  pass("config", "querylimit", form.query_config);
  pass("config", "listenport", form.port_config);
  pass("config", "uploadport", form.upport_config);
  pass("config", "modemspeed", form.speed_config);
  pass("config", "ttlmax", form.ttlMax_config);
  pass("config", "dnsserver", form.dns_ser);
  pass("config", "cachemax", form.cachemax_config);
  pass("config", "forceip", form.forceIP_config);
  pass("config", "form_b_color", form.form_b_sel);
  pass("config", "form_f_color", form.form_f_sel);
  pass("config", "but_b_color", form.but_b_sel);
  pass("config", "list_b_color", form.list_b_sel);
  pass("config", "list_f_color", form.list_f_sel);
  pass.lists();
  pass("upload", "speed", form.speed_upload);
  pass("upload", "packet", form.pack_upload);
  pass("upload", "log", form.log_upload);
  pass("upload", "max_in", form.max_in_upload);
  pass("upload", "textmessage", form.text_upload);
  pass("download", "autoclear", form.clear_down);
  pass("download", "maxdown", form.max_down);
  pass("hosts", "newhost", form.new_host);
  pass("hosts", "max_out", form.max_out_host);
  pass("hosts", "max_in", form.max_in_host);  // not the "max_in" of "upload"
  pass("hosts", "showdns", form.show_dns);
  pass("view", "showtraffic", form.traffic_view);
  pass.behaviour();
}

constexpr const char* kBehaviour = "behaviour";
constexpr const char* kLeftOutKey = "left_out";  // stored only when it was changed

std::string flag_text(bool flag) { return flag ? "1" : "0"; }

struct Loading {
  Form& form;
  const SettingsStore& store;
  FilterArray& filter;

  void operator()(const char* section, const char* key, TextField& field) {
    field.set_text(store.read(section, key, field.text()));
  }
  void operator()(const char* section, const char* key, Button& button) {
    const std::string colour = store.read(section, key, fmt::format("{}", button.back_colour()));
    button.set_back_colour(to_int32(number(colour)));
  }
  void operator()(const char* section, const char* key, Slider& slider) {
    const std::string position = store.read(section, key, fmt::format("{}", slider.position()));
    slider.set_position(to_int32(number(position)));
  }
  void operator()(const char* section, const char* key, CheckBox& box) {
    box.set_checked(to_int16(number(store.read(section, key, flag_text(box.checked())))) != 0);
  }

  void lists() {
    load_list("uppath", form.upload_config);
    const int filters = load_list("cachefilter", form.cachefilter_config);
    form.totalfilter_config.set_text(fmt::format("{}", filters));
    if (filters == 0) seed_default_filters(form);
    rebuild_filter_array(form, filter);
  }
  // A profile by name stands for its switches, those added to the program later included.
  void behaviour() {
    (*this)(kBehaviour, kLeftOutKey, form.exclude_config);
    const std::string profile = store.read(kBehaviour, "profile", "");
    for (int known : {kClassicProfile, kOverlayProfile}) {
      if (profile == form.behaviour.option(known)) return form.behaviour.choose(known);
    }
    for (std::size_t i = 0; i < kBehaviourSwitches.size(); ++i) {
      (*this)(kBehaviour, kBehaviourSwitches[i].name, form.behaviour_boxes[i]);
    }
  }
  // Returns how many there were before the first that is empty.
  int load_list(const char* name, ComboList& list) const {
    for (int i = 1; i <= kMostLoaded; ++i) {
      std::string value = store.read("config2", fmt::format("{}{}", name, i), "");
      if (value.empty()) return i - 1;
      list.add(std::move(value));
    }
    return kMostLoaded;
  }
};

struct Saving {
  const Form& form;
  SettingsStore& store;

  void operator()(const char* section, const char* key, const TextField& field) {
    store.write(section, key, field.text());
  }
  void operator()(const char* section, const char* key, const Button& button) {
    store.write(section, key, fmt::format("{}", button.back_colour()));
  }
  void operator()(const char* section, const char* key, const Slider& slider) {
    store.write(section, key, fmt::format("{}", slider.position()));
  }
  void operator()(const char* section, const char* key, const CheckBox& box) {
    store.write(section, key, flag_text(box.checked()));
  }

  void lists() {
    store.delete_section("config2");  // no numbered key of a longer list may stay behind
    save_list("uppath", form.upload_config.items());
    save_list("cachefilter", form.cachefilter_config.items());
  }
  void behaviour() {
    store.delete_section(kBehaviour);
    store.write(kBehaviour, "profile", form.behaviour.option(form.behaviour.chosen()));
    if (form.exclude_config.text() != kLeftOut)
      (*this)(kBehaviour, kLeftOutKey, form.exclude_config);
    if (form.behaviour.chosen() != kOwnChoice) return;
    for (std::size_t i = 0; i < kBehaviourSwitches.size(); ++i) {
      (*this)(kBehaviour, kBehaviourSwitches[i].name, form.behaviour_boxes[i]);
    }
  }
  void save_list(const char* name, const std::vector<std::string>& items) {
    for (std::size_t i = 1; i <= items.size(); ++i) {
      store.write("config2", fmt::format("{}{}", name, i), items[i - 1]);
    }
  }
};

}  // namespace

void load_settings(Form& form, const SettingsStore& store, FilterArray& filter) {
  Loading loading{form, store, filter};
  carry(loading, form);
}

void Save_settings(const Form& form, SettingsStore& store, DebugLog& log) {
  trap(log, "Save_settings: ", [&] {
    Saving saving{form, store};
    carry(saving, form);
    store.save();
  });
}

void seed_default_filters(Form& form) {
  ComboList& list = form.cachefilter_config;
  if (!list.items().empty()) return;
  for (std::string& range : private_addresses()) list.add(std::move(range));
  form.totalfilter_config.set_text(fmt::format("{}", list.items().size()));
}

}  // namespace velmora
