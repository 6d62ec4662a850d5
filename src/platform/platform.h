// The machine as one servent sees it: a bundle of the platform's abstract classes, chosen when the
// servent is constructed. The parts are owned by the program (or the simulation) that made them and
// outlive the servent.
#pragma once

#include "platform/control_channel.h"
#include "platform/desktop.h"
#include "platform/dns_client.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/folder_watch.h"
#include "platform/local_services.h"
#include "platform/message_boxes.h"
#include "platform/network.h"
#include "platform/random_source.h"

namespace velmora {

struct Platform {
  EventLoop& loop;
  Network& network;
  Files& files;
  MessageBoxes& boxes;
  TrayIcon& tray;
  ProgramStarter& programs;
  ControlChannel& control;
  DnsClient& dns;
  RandomSource& random = no_random_source();
  LocalServices* local_services = nullptr;  // may be missing
  FolderWatcher* folders = nullptr;         // none where the machine cannot watch
};

}  // namespace velmora
