#include <QZLog/Log.h>
#include <Support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <csignal>
#include <fstream>
#include <iterator>

namespace {

namespace log = qz::log;

std::string contents(const std::filesystem::path& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class Log : public testing::Test {
 protected:
  ~Log() override { log::configure({}); }
  TemporaryFolder folder_;
};

TEST_F(Log, OpensItsFileAtTheFirstWarningAndForTheOwnerOnly) {
  const auto path = folder_ / "habitra.log";
  const mode_t before = ::umask(0);
  log::configure({.file = path});
  log::info("Processing tasks");
  EXPECT_FALSE(std::filesystem::exists(path));
  log::warning("Unable to find task with ID {}", 7);
  ::umask(before);
  const std::string text = contents(path);
  EXPECT_NE(text.find("warning Unable to find task with ID 7\n"), std::string::npos) << text;
  EXPECT_EQ(text.find("Processing"), std::string::npos);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0600});
}

TEST_F(Log, VerboseWritesEveryMessageToStandardError) {
  log::configure({.verbose = true});
  testing::internal::CaptureStderr();
  log::debug("Found existing entry with ID={}", "A");
  log::error("no");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "habitra: debug: Found existing entry with ID=A\nhabitra: error: no\n");
}

TEST_F(Log, RotatesAndKeepsThreeFiles) {
  log::configure({.file = folder_ / "habitra.log"});
  const std::string line(100'000, 'x');
  const mode_t before = ::umask(0);
  for (int i = 0; i < 50; ++i) log::warning("{}", line);
  ::umask(before);
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
    EXPECT_LE(entry.file_size(), 1'200'000u);
    EXPECT_EQ(entry.status().permissions(), std::filesystem::perms{0600}) << entry.path();
    ++files;
  }
  EXPECT_EQ(files, 3);
}

TEST_F(Log, GivesUpAFileThatCannotBeWritten) {
  std::filesystem::create_symlink(folder_ / "elsewhere", folder_ / "habitra.log");
  log::configure({.file = folder_ / "habitra.log"});
  log::error("lost");
  EXPECT_FALSE(log::isKept(log::Level::error));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "elsewhere"));
}

TEST_F(Log, SaysNothingOfItselfWhereTheDiskIsFull) {
  log::configure({.file = folder_ / "habitra.log"});
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit size{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &size), 0);
  constexpr rlim_t full = 10'000;  // what is said is less, and goes to a file as well
  const rlimit limited{full, size.rlim_max};
  log::warning("{}", std::string(full, 'x'));
  testing::internal::CaptureStderr();
  ::setrlimit(RLIMIT_FSIZE, &limited);
  log::warning("lost");
  ::setrlimit(RLIMIT_FSIZE, &size);
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  log::warning("kept");
  EXPECT_NE(contents(folder_ / "habitra.log").find("kept"), std::string::npos);
}

}  // namespace
