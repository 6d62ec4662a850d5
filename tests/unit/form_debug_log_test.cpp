#include "app/form_debug_log.h"

#include <gtest/gtest.h>

#include <string>

#include "form/form.h"

namespace velmora {
namespace {

TEST(FormDebugLog, GrowsToItsLimitAndIsCutToItsFirstCharactersBeyondIt) {
  Form form;
  FormDebugLog log(form.frmDebug);
  const std::string& text = form.frmDebug.text();
  std::string expected;
  for (const char c : std::string("abcde")) {
    const std::string line(FormDebugLog::kMostCharacters / 5 - 2, c);
    log.debug_log(line);
    expected += line + "\r\n";
    EXPECT_EQ(text, expected);
  }
  ASSERT_EQ(text.size(), FormDebugLog::kMostCharacters);

  log.debug_log("x");
  expected.resize(FormDebugLog::kCutTo);
  EXPECT_EQ(text, expected);
  log.debug_log("y\n");
  EXPECT_EQ(text, expected + "y\\x0A\r\n");
}

}  // namespace
}  // namespace velmora
