#pragma once

#include <HabitraModel/Health/SampleStore.h>
#include <Support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace habitra {

/// Minutes after the beginning of some day.
inline qz::Moment minute(std::int64_t minutes) {
  return qz::Moment(std::chrono::days(19'000)) + std::chrono::minutes(minutes);
}

inline qz::UniqueID identifier(std::uint32_t number) {
  qz::UniqueID::Bytes bytes{};
  for (std::size_t at = 0; at < 4; ++at) bytes[15 - at] = static_cast<std::uint8_t>(number >> (8 * at) & 0xFFU);
  return qz::UniqueID(bytes);
}

inline qz::QZHKSample sample(std::uint32_t number, qz::QZHKObjectType type, std::int64_t start, std::int64_t end,
                             qz::QZHKSampleValue value = {}, std::string source = "Watch") {
  return {.identifier = identifier(number),
          .objectType = type,
          .start = minute(start),
          .end = minute(end),
          .value = std::move(value),
          .source = std::move(source),
          .device = std::nullopt,
          .task = std::nullopt};
}

inline qz::QZHKSample steps(std::uint32_t number, std::int64_t start, std::int64_t end, double count = 100) {
  return sample(number, qz::QZHKObjectType::stepCount, start, end, qz::QZHKQuantity{count, qz::QZHKUnit::count});
}

inline qz::QZHKSampleQuery all(qz::QZHKObjectType type) {
  return {.objectType = type, .span = {qz::Moment::min(), qz::Moment::max()}, .predicate = {}};
}

/// A store in a home of its own; each object stands for a program of its own.
class SampleStoreTest : public testing::Test {
 protected:
  [[nodiscard]] std::filesystem::path home() const { return folder_ / "home"; }
  [[nodiscard]] std::filesystem::path file() const { return home() / SampleStore::fileName; }
  [[nodiscard]] SampleStore open() const { return SampleStore(home()); }

  static void save(SampleStore& store, const std::vector<qz::QZHKSample>& samples) { store.save(samples); }
  void save(const std::vector<qz::QZHKSample>& samples) const { SampleStore(home()).save(samples); }
  [[nodiscard]] std::size_t countOfSteps() const {
    return SampleStore(home()).samples(all(qz::QZHKObjectType::stepCount)).size();
  }

  TemporaryFolder folder_;
};

/// The reason and the message of the failure that `step` ends in.
template <typename Step>
std::pair<qz::QZHealthStoreError::Reason, std::string> failureOf(const Step& step) {
  try {
    step();
  } catch (const qz::QZHealthStoreError& error) {
    return {error.reason(), error.what()};
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

}  // namespace habitra
