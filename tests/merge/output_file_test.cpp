#include "merge/output_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "merge/merge_files.hpp"

namespace pellago::merge_test {
namespace {

using testing::ElementsAre;

using OutputFileTest = ScratchFolderTest;

mode_t permissions(const std::string& path) {
  struct stat status;
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

// Replacing links, keeping permissions and failing in a read-only folder are checked through the
// CLI (tests/cli/merge_test.sh); a failed merge leaving no file behind, in merge_test.cpp.
TEST_F(OutputFileTest, NewFileGetsThePermissionsTheUmaskAllows) {
  const mode_t mask = umask(027);
  write_file_replacing(path("created.xml"), [](const OutputSink& sink) { sink("made"); });
  umask(mask);
  EXPECT_EQ(read_file(path("created.xml")), "made");
  EXPECT_EQ(permissions(path("created.xml")), 0640u);
  EXPECT_THAT(folder_entries(folder_), ElementsAre("created.xml"));
}

}  // namespace
}  // namespace pellago::merge_test
