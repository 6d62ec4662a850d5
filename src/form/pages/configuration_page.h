// The page "Configuration": paths, ports, limits, shared directories, filter, colours, help.
#pragma once

#include "form/control.h"

namespace velmora {

struct ConfigurationPage {
  explicit ConfigurationPage(ControlRegistry& registry) : form_(registry) {
    mascot_text.set_visible(false);
  }

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::configuration;
  static constexpr const char* kColors = "Change Colors. Have Fun.";

 public:
  TextField down_config{form_, "down_config", page, "Download path",
                        "The directory that downloaded files go to."};
  Button download_browse_config{form_, "download_browse_config", page, "Browse",
                                "Browse for Download path"};
  TextField query_config{form_,
                         "query_config",
                         page,
                         "Query limit",
                         "Limits the results of a query on your shared files",
                         "50"};
  TextField port_config{form_,
                        "port_config",
                        page,
                        "Listening Port",
                        "Other hosts connect to this port. (Press Enter key)",
                        "6346"};
  TextField upport_config{form_,
                          "upport_config",
                          page,
                          "Upload Port",
                          "Other hosts download from this port. (Press Enter key)",
                          "6345"};
  TextField speed_config{
      form_, "speed_config", page, "Modem speed", "Speed reported to other clients", "56"};
  Button speed_help{form_, "speed_help", page, "?", "Help on modem"};
  TextField ttlMax_config{
      form_, "ttlMax_config", page, "Max TTL", "How many hosts a message may pass.", "5"};
  TextField dns_ser{form_, "dns_ser", page, "DNS Server", "Enter your DNS server's IP"};
  TextField cachemax_config{
      form_, "cachemax_config", page, "Cache list max", "Max to display in cache host list", "100"};
  TextField forceIP_config{form_, "forceIP_config", page, "Force IP",
                           "Report this IP to other hosts. Leave empty for your own."};

  ComboList upload_config{form_, "upload_config", page, "Shared directories",
                          "Share these directories (All file types are shared. Subdirectories are "
                          "NOT scanned) (Press Enter key) (Press Delete key to remove a path)"};
  Button upload_browse_config{form_, "upload_browse_config", page, "Browse",
                              "Browse for Shared path"};
  Button scan_config{form_, "scan_config", page, "Scan",
                     "Scan your files to a local list. You should Rescan if they are changed."};
  Progress scan_progress{form_, "scan_progress", page, "Scanning",
                         "How far the scan of the shared directories is."};
  Label sharenum_config{form_,          "sharenum_config",           page,
                        "Files shared", "How many files you share.", "0"};
  Label sharesize_config{
      form_, "sharesize_config", page, "Size shared", "Total size of the files you share.", "0"};

  ComboList cachefilter_config{form_, "cachefilter_config", page, "Cache IP filter",
                               "IPs that begin like this stay out of the cache (Press Enter key) "
                               "(Press Delete key to remove an IP)"};
  Label totalfilter_config{
      form_, "totalfilter_config", page, "Total IPs filtered", "How many IPs are in the filter.",
      "0"};

  Button form_b_sel{form_, "form_b_sel", page, "Back", kColors};
  Button form_f_sel{form_, "form_f_sel", page, "Fore", kColors};
  Button but_b_sel{form_, "but_b_sel", page, "Back", kColors};
  Button list_b_sel{form_, "list_b_sel", page, "Back", kColors};
  Button list_f_sel{form_, "list_f_sel", page, "Fore", kColors};
  Button color_help{form_, "color_help", page, "?", "Help on colors"};

  Label version{form_, "version", page, "Version", "The version of this program."};
  Button ver_help{form_, "ver_help", page, "?", "Help on this version"};
  Label s_debug{form_,         "s_debug", page, "Debug", "DoubleClick to view the debug log.",
                "What's this?"};

  Picture mascot1{form_, "mascot1", page, "", "", true};
  Picture mascot2{form_, "mascot2", page, "", "", false};
  Picture mascot3{form_, "mascot3", page, "", "", false};
  Label mascot_text{form_, "mascot_text", page, "", "", "This is dumb..."};
};

}  // namespace velmora
