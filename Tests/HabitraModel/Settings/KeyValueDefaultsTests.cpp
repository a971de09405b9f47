#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/StoreError.h>
#include <Support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace habitra {
namespace {

namespace fs = std::filesystem;
using Value = KeyValueDefaults::Value;
using Values = KeyValueDefaults::Values;

class KeyValueDefaultsTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path path() const { return folder_ / "home" / "Habitra-Shared.json"; }
  /// As another program sees it.
  [[nodiscard]] std::shared_ptr<KeyValueDefaults> open() const { return KeyValueDefaults::file(path()); }

  [[nodiscard]] std::string content() const {
    std::ifstream stream(path());
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  void write(const std::string& content) const {
    fs::create_directories(path().parent_path());
    std::ofstream(path()) << content;
  }

  [[nodiscard]] std::vector<std::string> filesInHome() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path().parent_path()))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  /// The one line that reading ends with.
  [[nodiscard]] std::string complaint() const {
    try {
      (void)open()->values();
    } catch (const StoreError& error) {
      return error.what();
    }
    return "";
  }

  /// What became of a process that does `work` and leaves with 0.
  template <typename Work>
  static int statusOfProcess(Work&& work) {
    const pid_t child = ::fork();
    if (child == 0) {
      int code = 1;
      try {
        work();
        code = 0;
      } catch (const std::exception& error) {
        ::fputs((std::string(error.what()) + "\n").c_str(), stderr);
      }
      ::_exit(code);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
  }

  static void limitFileSize(rlim_t bytes) {
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }

  TemporaryFolder folder_;
};

Values valuesOfEveryKind() {
  Values values;
  values["yes"] = true;
  values["least"] = std::numeric_limits<std::int64_t>::min();
  values["most"] = std::numeric_limits<std::int64_t>::max();
  values["one"] = 1.0;
  values["tenth"] = 0.1;
  values["tiny"] = -std::numeric_limits<double>::denorm_min();
  values["text"] = "{\"moment\": \"2024-01-31T00:00:00Z\"}\n\"ü\" 😀";
  values["bytes"] = Bytes{0, 255, 128, 10};
  values["no bytes"] = Bytes{};
  values["moment"] = qz::Moment(std::chrono::microseconds(1'706'688'900'250'001));
  values["first moment"] = qz::Moment::min();
  values["last moment"] = qz::Moment::max();
  Values inner;
  inner["moment"] = "a text";
  inner["deeper"] = Values{{"count", std::int64_t{3}}};
  values["dictionary"] = inner;
  values["empty"] = Values{};
  return values;
}

TEST_F(KeyValueDefaultsTest, KeepsEveryValueExactlyAndWithItsKind) {
  const Values all = valuesOfEveryKind();
  for (const auto& defaults : {open(), KeyValueDefaults::inMemory()}) {
    for (const auto& [key, value] : all) defaults->set(key, value);
    EXPECT_EQ(defaults->values(), all);
    EXPECT_EQ(defaults->keys().size(), all.size());
    EXPECT_EQ(defaults->get<double>("one"), 1.0);
    EXPECT_EQ(defaults->get<std::int64_t>("one"), std::nullopt);
    EXPECT_EQ(defaults->get<std::string>("yes"), std::nullopt);
    EXPECT_EQ(defaults->get<std::string>("nobody"), std::nullopt);
  }
  EXPECT_EQ(open()->values(), all);
  open()->remove("bytes");
  open()->remove("nobody");
  EXPECT_EQ(open()->get<Bytes>("bytes"), std::nullopt);
  EXPECT_EQ(open()->keys().size(), all.size() - 1);
}

TEST_F(KeyValueDefaultsTest, ReadingMakesNothingAndWritingNothingNewWritesNothing) {
  EXPECT_TRUE(open()->keys().empty());
  EXPECT_FALSE(fs::exists(path().parent_path()));
  open()->set("count", std::int64_t{1});
  struct stat before {};
  ASSERT_EQ(::stat(path().c_str(), &before), 0);
  open()->set("count", std::int64_t{1});
  struct stat after {};
  ASSERT_EQ(::stat(path().c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_THROW(open()->update([](Values& values) {
    values["count"] = std::int64_t{2};
    throw std::runtime_error("no");
  }),
               std::runtime_error);
  EXPECT_EQ(open()->get<std::int64_t>("count"), 1);
}

TEST_F(KeyValueDefaultsTest, FilesAreTheOwnersAloneWhateverTheUmask) {
  const mode_t old = ::umask(0);
  open()->set("a", true);
  ::umask(old);
  EXPECT_EQ(fs::status(path().parent_path()).permissions(), fs::perms::owner_all);
  for (const auto& entry : fs::directory_iterator(path().parent_path()))
    EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write) << entry.path();
}

TEST_F(KeyValueDefaultsTest, WhatANewerVersionWroteIsKeptWhereItIsNotReplaced) {
  write(R"({"list":[1,2.50,null],"colour":{"rgb":[1,2,3]},"two":{"moment":"2024-01-31T00:00:00Z","zone":"UTC"},)"
        R"("when":{"moment":"soon"},"big":18446744073709551615,"replaced":{"rgb":[0]},"kept":{"bytes":"AP8="},)"
        R"("inner":{"dictionary":{"known":1,"unknown":[7]}}})");
  const auto defaults = open();
  EXPECT_EQ(defaults->keys(), (std::vector<std::string>{"inner", "kept"}));
  defaults->update([](Values& values) {
    values["replaced"] = "text";
    values["inner"] = Values{{"known", std::int64_t{2}}};
  });
  std::string flat = content();
  std::erase_if(flat, [](char c) { return c == ' ' || c == '\n'; });
  for (const std::string kept : {R"("list":[1,2.5,null])", R"("colour":{"rgb":[1,2,3]})",
                                 R"("two":{"moment":"2024-01-31T00:00:00Z","zone":"UTC"})",
                                 R"("when":{"moment":"soon"})", R"("big":18446744073709551615)", R"("replaced":"text")",
                                 R"("kept":{"bytes":"AP8="})", R"("inner":{"dictionary":{"known":2,"unknown":[7]}})"})
    EXPECT_NE(flat.find(kept), std::string::npos) << kept << " in " << flat;
}

TEST_F(KeyValueDefaultsTest, ADamagedFileIsRefusedInOneLineAndLeftAsItWas) {
  const std::vector<std::pair<std::string, std::string>> damaged{
      {"", "no JSON at line 1, column 1"},
      {"{\"a\": 1,\n \"b\": tru}", "no JSON at line 2, column 10"},
      {"{\"a\": \"\xFF\"}", "no JSON at line 1, column 8"},
      {"[1]", "not a JSON object"},
      {"{\"a\": 1e999}", "a number beyond all bounds"},
      {"{\"a\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}", "nested too deeply"}};
  for (const auto& [text, reason] : damaged) {
    write(text);
    EXPECT_EQ(complaint(),
              path().string() + " is damaged (" + reason + "); mend it, or move it away to start with the defaults");
    EXPECT_THROW(open()->set("b", true), StoreError);
    EXPECT_EQ(content(), text);
  }
}

TEST_F(KeyValueDefaultsTest, FollowsNoLinkAndReadsNothingButPlainFiles) {
  open()->set("a", true);
  const fs::path elsewhere = folder_ / "elsewhere";
  fs::rename(path(), elsewhere);
  fs::create_symlink(elsewhere, path());
  EXPECT_EQ(complaint(), path().string() + " is a link; put the file itself there");
  EXPECT_THROW(open()->set("a", false), StoreError);
  fs::remove(path());
  ASSERT_EQ(::mkfifo(path().c_str(), 0600), 0);
  EXPECT_EQ(complaint(), path().string() + " is not a plain file; move it away");
  fs::remove(path());
  fs::rename(elsewhere, path());
  fs::remove(path().string() + ".lock");
  fs::create_symlink(elsewhere, path().string() + ".lock");
  EXPECT_THROW(open()->set("a", false), StoreError);
  EXPECT_FALSE(fs::exists(elsewhere));
  EXPECT_EQ(open()->get<bool>("a"), true);
}

TEST_F(KeyValueDefaultsTest, AFolderThatMayNotBeWrittenCanBeRead) {
  open()->set("a", true);
  fs::remove(path().string() + ".lock");
  fs::permissions(path().parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(open()->get<bool>("a"), true);
  if (::geteuid() != 0) {
    EXPECT_THROW(open()->set("a", false), StoreError);
  }
  fs::permissions(path().parent_path(), fs::perms::owner_all);
}

TEST_F(KeyValueDefaultsTest, ProcessesTakeTurnsAndLoseNothing) {
  constexpr int processes = 8;
  constexpr int increments = 200;
  std::vector<pid_t> children;
  for (int process = 0; process < processes; ++process) {
    const pid_t child = ::fork();
    if (child == 0) {
      int code = 1;
      try {
        for (int i = 0; i < increments; ++i) {
          open()->update([](Values& values) {
            const std::int64_t* count = values["count"].as<std::int64_t>();
            values["count"] = (count == nullptr ? 0 : *count) + 1;
          });
          (void)open()->values();  // never half a file
        }
        code = 0;
      } catch (const std::exception& error) {
        ::fputs((std::string(error.what()) + "\n").c_str(), stderr);
      }
      ::_exit(code);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(open()->get<std::int64_t>("count"), processes * increments);
}

TEST_F(KeyValueDefaultsTest, AWriterThatIsKilledLeavesTheOldFileAndTheNextOneCleansUp) {
  open()->set("name", "old");
  const int status = statusOfProcess([&] {
    ::signal(SIGXFSZ, SIG_DFL);
    limitFileSize(16);
    open()->set("name", std::string(1000, 'n'));
  });
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
  EXPECT_EQ(filesInHome(),
            (std::vector<std::string>{"Habitra-Shared.json", "Habitra-Shared.json.lock", "Habitra-Shared.json.new"}));
  EXPECT_EQ(open()->get<std::string>("name"), "old");
  open()->set("name", "new");
  EXPECT_EQ(open()->get<std::string>("name"), "new");
  EXPECT_EQ(filesInHome(), (std::vector<std::string>{"Habitra-Shared.json", "Habitra-Shared.json.lock"}));
}

TEST_F(KeyValueDefaultsTest, AWriteThatFailsLeavesEverythingAsItWas) {
  open()->set("name", "old");
  const int status = statusOfProcess([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    limitFileSize(16);
    try {
      open()->set("name", std::string(1000, 'n'));
    } catch (const StoreError&) {
      return;
    }
    throw std::runtime_error("it did not fail");
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(open()->get<std::string>("name"), "old");
  EXPECT_EQ(filesInHome(), (std::vector<std::string>{"Habitra-Shared.json", "Habitra-Shared.json.lock"}));
}

TEST(KeyValueDefaultsDeathTest, WhatNoFileCanHoldStopsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const TemporaryFolder folder;
  const auto defaults = KeyValueDefaults::file(folder / "a.json");
  EXPECT_DEATH(defaults->set("a", std::numeric_limits<double>::quiet_NaN()), "not finite");
  EXPECT_DEATH(defaults->set("a", std::string("\xC3")), "not UTF-8");
}

}  // namespace
}  // namespace habitra
