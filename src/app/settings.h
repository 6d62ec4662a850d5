// The live settings are the fields of the form; these two procedures carry them between the form
// and the store: once at start-up, once at shutdown. No field is checked here: who uses a setting
// validates it. They own nothing.
#pragma once

#include <string>

#include "app/settings_store.h"
#include "form/form.h"
#include "net/address_filter.h"
#include "platform/debug_log.h"

namespace velmora {

// Fills the controls. A key that the store does not have leaves its control as it is. A stored
// text that is no number where one is needed ends the loading there: raises a PlatformError.
void load_settings(Form& form, const SettingsStore& store, FilterArray& filter);

// Writes every control to the store and the store to its file. Traps its errors: "Save_settings: ".
void Save_settings(const Form& form, SettingsStore& store, DebugLog& log);

// Puts the private address ranges into an empty filter list and shows their number.
void seed_default_filters(Form& form);

}  // namespace velmora
