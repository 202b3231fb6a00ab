#include "merge/output_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "error.hpp"
#include "merge_files.hpp"

namespace pellago::merge_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

using OutputFileTest = ScratchFolderTest;

mode_t permissions(const std::string& path) {
  struct stat status;
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

// Replacing links and keeping permissions are checked through the CLI (tests/cli/merge_test.sh).
TEST_F(OutputFileTest, NewFileGetsThePermissionsTheUmaskAllows) {
  const mode_t mask = umask(027);
  write_file_replacing(path("created.xml"), [](const OutputSink& sink) { sink("made"); });
  umask(mask);
  EXPECT_EQ(read_file(path("created.xml")), "made");
  EXPECT_EQ(permissions(path("created.xml")), 0640u);
  EXPECT_THAT(folder_entries(folder_), ElementsAre("created.xml"));
}

TEST_F(OutputFileTest, FailureLeavesNoTemporaryFileAndNamesThePath) {
  const auto merged = [](const OutputSink& sink) { sink("merged"); };
  fs::create_directory(folder_ / "out.xml");
  try {
    write_file_replacing(path("out.xml"), merged);
    ADD_FAILURE() << "a folder was replaced by a file";
  } catch (const Error& error) {
    EXPECT_EQ(error.what(),
              "cannot write \"" + path("out.xml") + "\": it exists and is not a regular file");
  }
  EXPECT_THAT(folder_entries(folder_), ElementsAre("out.xml"));

  const auto failing = [](const OutputSink& sink) {
    sink("half");
    throw Error("the merge failed");
  };
  EXPECT_THROW(write_file_replacing(path("new.xml"), failing), Error);
  EXPECT_THAT(folder_entries(folder_), ElementsAre("out.xml"));

  try {
    write_file_replacing(path("missing/out.xml"), merged);
    ADD_FAILURE() << "a file was written into a missing folder";
  } catch (const Error& error) {
    EXPECT_EQ(error.system_error, ENOENT);
  }
}

}  // namespace
}  // namespace pellago::merge_test
