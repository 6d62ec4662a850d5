// Which behaviours of the servent differ from its classic ones: one flag a switch, all off in the
// profile Classic, all on in Overlay. A plain record that says nothing of how a switch works: each
// module asks for its own at the one place where its classic behaviour stands. The servent owns the
// record and changes it while modules hold on to it, so ask each time.
#pragma once

#include <array>

namespace velmora {

struct Behaviour {
  bool whole_descriptors = false;
  bool random_identifiers = false;
  bool relay = false;
  bool push = false;
  bool keep_alive = false;
  bool any_port = false;
  bool large_library = false;
  bool whole_files = false;
  bool plain_http = false;
  bool exact_audio = false;
  bool filter_results = false;
  bool local_network = false;
};

inline constexpr Behaviour kClassic{};

struct BehaviourSwitch {
  bool Behaviour::*flag;
  const char* name;      // in the settings and on the command line
  const char* caption;   // in the window
  const char* changes;   // what is different while it is on, in a line
  const char* to_peers;  // what peers that run Classic see of it, in a line
};

inline constexpr std::array<BehaviourSwitch, 12> kBehaviourSwitches{{
    {&Behaviour::whole_descriptors, "whole_descriptors", "Whole messages",
     "A message that arrives in pieces waits for its rest instead of being lost.",
     "They are passed whole messages where they got cut ones."},
    {&Behaviour::random_identifiers, "random_identifiers", "Random identifiers",
     "Messages and this servent get identifiers that nobody else has; this servent keeps its own.",
     "They lose fewer messages to identifiers that repeat."},
    {&Behaviour::relay, "relay", "Relay answers",
     "Answers to a search are passed back the way that the search came; repeats are dropped.",
     "Their searches find what lies beyond their neighbours when those between relay."},
    {&Behaviour::push, "push", "Push",
     "A host that you cannot connect to is asked to connect to you and send the file; asked by "
     "others, you do the same.",
     "They do not answer when they are asked."},
    {&Behaviour::keep_alive, "keep_alive", "Keep alive",
     "A silent connection is pinged after 10 s, and one that fell is replaced from the cache.",
     "They answer the ping with a pong, so that the connection stays."},
    {&Behaviour::any_port, "any_port", "Any port", "Ports above 32767 are understood.",
     "Those at such a port are found and fetched from."},
    {&Behaviour::large_library, "large_library", "Large library",
     "Subfolders are shared, without a limit of 99 files, and changes are found by themselves.",
     "They see more files."},
    {&Behaviour::whole_files, "whole_files", "Whole files",
     "Downloads lose no bytes, survive a restart, are tried again and use a second source.",
     "They are asked again for a file that failed."},
    {&Behaviour::plain_http, "plain_http", "Plain HTTP",
     "Browsers, curl and wget can fetch from the upload port; web servers can be fetched from.",
     "They see no difference."},
    {&Behaviour::exact_audio, "exact_audio", "Exact audio",
     "From the next scan on all sampling rates of MPEG audio are known, tags before it skipped.",
     "They are shown the right figures."},
    {&Behaviour::filter_results, "filter_results", "Filter results",
     "Results that lack a search word can be left out; equal files are one row with its sources.",
     "They see no difference."},
    {&Behaviour::local_network, "local_network", "Local network",
     "Servents on the same network find each other; private addresses come into the cache.",
     "They are not found, for they do not announce themselves."},
}};

}  // namespace velmora
