// Deleting a partial file on a real disk: what it takes and what it leaves alone.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/uv/uv_files.h"
#include "uv_rig.h"

namespace velmora::uv {
namespace {

namespace fs = std::filesystem;

TEST(RemovePartial, TakesRegularFilesInsideTheFolderAndNothingElse) {
  const TemporaryFolder folder;
  fs::create_directory(folder.path("down"));
  std::ofstream(folder.path("down/a.download")) << "part";
  std::ofstream(folder.path("outside")) << "kept";
  fs::create_symlink("../outside", folder.path("down/link"));
  fs::create_directory(folder.path("down/sub"));
  UvFiles files(folder.path());
  files.remove_partial("down", "a.download");
  EXPECT_FALSE(fs::exists(folder.path("down/a.download")));
  files.remove_partial("down", "a.download");  // it is gone already
  EXPECT_EQ(code_of([&] { files.remove_partial("down", "../outside"); }), Errc::bad_file_name);
  EXPECT_EQ(code_of([&] { files.remove_partial("down", "link"); }), Errc::system);
  EXPECT_EQ(code_of([&] { files.remove_partial("down", "sub"); }), Errc::system);
  EXPECT_EQ(code_of([&] { files.remove_partial("none", "a"); }), Errc::path_not_found);
  EXPECT_TRUE(fs::exists(folder.path("outside")));
  EXPECT_TRUE(fs::is_symlink(folder.path("down/link")));
}

}  // namespace
}  // namespace velmora::uv
