#pragma once

#include <gtest/gtest.h>
#include <Support/TemporaryFolder.h>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// What a run of the program came to.
struct Outcome {
  int exitCode = 0;  ///< negative: the signal that ended it
  std::string out;
  std::string err;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// The outcome of a run that succeeds and says `out`.
inline Outcome says(std::string out) { return {0, std::move(out), {}}; }

/// Runs the real program as a child process, with a home of its own, at a fixed time in a fixed zone.
class Program : public testing::Test {
 protected:
  enum class Output {
    caught,      ///< what is written is in the outcome
    full,        ///< a disk without room
    closedPipe,  ///< a reader that has gone
    none,        ///< not open at all
  };

  /// Runs `habitra --home ... --now ... --time-zone ... WORDS`.
  Outcome run(const std::vector<std::string>& words);
  /// Runs `habitra WORDS` with nothing added.
  Outcome runBare(const std::vector<std::string>& words);

  [[nodiscard]] std::filesystem::path write(const std::string& name, const std::string& text) const;
  /// Every file below the home with its size and a hash of its bytes. The index that the engine keeps beside its log is
  /// left out: readers write to it, and it holds nothing.
  [[nodiscard]] std::map<std::string, std::pair<std::size_t, std::size_t>> homeContents() const;

  TemporaryFolder folder_;
  std::filesystem::path home_ = folder_ / "home";
  std::string now_ = "2024-01-31T10:00:00Z";  // a Wednesday
  std::string timeZone_ = "Europe/Berlin";
  std::string input_;
  Output output_ = Output::caught;
};

[[nodiscard]] std::string bytesOf(const std::filesystem::path& file);
