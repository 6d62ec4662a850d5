// Small questions about what stands on the command line and what the servent's controls show.
// No I/O.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::cli {

// The value that a control of this kind takes, from its text on the command line: true or false
// for a check box, a number for a slider or an option group, else the text. Raises a Failure.
nlohmann::json value_for(std::string_view kind, const std::string& text);

// Letters of ASCII without capitals.
std::string lower(std::string_view text);

// A value that a control gave, as text; the items of a list on a line each.
std::string value_text(const nlohmann::json& value);

// The same, but a count with its thousands apart: "1,234".
std::string shown_value(const nlohmann::json& value);
// "3 files, 4,096 bytes", or "3 files shared, ..." with the verb " shared". After a start only the
// size of the list in use is known.
std::string shared_text(const nlohmann::json& files, const nlohmann::json& bytes,
                        std::string_view verb = "");

// "1,234" as the number 1234; any other text as it is.
nlohmann::json number_or_text(const std::string& text);

// With "*" or "?" a pattern for the whole name; without them a part of it, capitals not minded.
bool name_matches(const std::string& pattern, const std::string& name);

// What stands behind "Version: " in the text of the control `version`.
std::string version_number(const std::string& text);

// Whether a cell shows this address: with or without a port, alone or beside a name.
bool shows_address(std::string_view cell, std::string_view address);
std::string_view without_port(std::string_view host);

// What the statuses of a connection and of an upload mean.
bool is_connected(std::string_view status);
bool is_connecting(std::string_view status);
bool is_uploading(std::string_view status);

// What was added to a text of which the servent keeps a bounded part only.
std::string_view added_text(std::string_view before, std::string_view after);
std::size_t occurrences(std::string_view text, std::string_view part);
// The last line that begins so, without its line end; empty when there is none.
std::string last_line_with(std::string_view text, std::string_view start);

// Whether a row of the download list is that search result; extensions compare without capitals.
bool is_download_of(std::string_view list_name, std::string_view name, std::string_view extension);

// "$XDG_DATA_HOME/velmora", or that of the home folder; a relative or empty XDG path is not used.
std::string default_profile(const char* xdg_data_home, const std::string& home);

}  // namespace velmora::cli
