// The switch "Exact audio": what a scan of the shared files finds in music.
#include <gtest/gtest.h>

#include "servent_rig.h"
#include "share/shared_list_file.h"

namespace velmora::sim {
namespace {

TEST(ExactAudioSwitch, TheNextScanReadsAsTheSwitchStands) {
  ServentRig rig;
  // 48000 Hz, 128 kbit/s, 384 bytes a frame, behind a tag of 6000 bytes that holds a false start.
  std::string frame("\xFF\xFB\x94\x00", 4);
  frame.resize(384);
  std::string tag("ID3\x03\0\0\0\0\x2E\x70\xFF\xFB\xE0\x00", 14);
  tag.resize(6010);
  rig.host.files().put("/share/song.mp3", tag + frame + frame);
  rig.host.files().put("/share/text.mp3", "no music");
  rig.form().upload_config.enter("/share");
  const auto scan = [&](bool exact) {
    rig.turn("exact_audio", exact);
    rig.form().scan_config.click();
    rig.world.run_for(100);
    return rig.host.files().content(kSharedListFile);
  };
  const std::string classic = scan(false);
  EXPECT_NE(classic.find("song.mp3\00144100\001320000"), std::string::npos);
  const std::string exact = scan(true);
  EXPECT_NE(exact.find("song.mp3\00148000\001128000"), std::string::npos);
  EXPECT_NE(exact.find("text.mp3\001\001"), std::string::npos);
  EXPECT_EQ(rig.logged("Get_mp3_info: Invalid procedure call or argument"), 2);
  EXPECT_EQ(scan(false), classic);
}

}  // namespace
}  // namespace velmora::sim
