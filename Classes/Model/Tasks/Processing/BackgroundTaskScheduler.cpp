#include <HabitraModel/Tasks/Processing/BackgroundTaskScheduler.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace habitra {
namespace {

using Values = KeyValueDefaults::Values;

std::string nameOf(const BackgroundTaskRequest& request) {
  return request.taskID ? request.identifier + " " + request.taskID->text() : request.identifier;
}

std::optional<BackgroundTaskRequest> requestOf(std::string_view name, const KeyValueDefaults::Value& value) {
  const auto* moment = value.as<qz::Moment>();
  if (moment == nullptr) return std::nullopt;
  const std::size_t blank = name.find(' ');
  if (blank == std::string_view::npos) return BackgroundTaskRequest{std::string(name), std::nullopt, *moment};
  const auto task = qz::UniqueID::fromText(name.substr(blank + 1));
  if (!task) return std::nullopt;
  return BackgroundTaskRequest{std::string(name.substr(0, blank)), task, *moment};
}

Values dictionary(const Values& values) {
  const auto found = values.find(KeptBackgroundTasks::key);
  const Values* kept = found == values.end() ? nullptr : found->second.as<Values>();
  return kept == nullptr ? Values() : *kept;
}

/// By moment.
std::vector<BackgroundTaskRequest> requestsIn(const Values& values) {
  std::vector<BackgroundTaskRequest> requests;
  for (const auto& [name, value] : dictionary(values))
    if (auto request = requestOf(name, value)) requests.push_back(std::move(*request));
  std::ranges::stable_sort(requests, {}, &BackgroundTaskRequest::earliestBeginDate);
  return requests;
}

}  // namespace

void KeptBackgroundTasks::submit(const BackgroundTaskRequest& request) {
  defaults_.update([&](Values& values) {
    Values requests = dictionary(values);
    requests.insert_or_assign(nameOf(request), request.earliestBeginDate);
    values.insert_or_assign(key, std::move(requests));
  });
}

std::vector<BackgroundTaskRequest> KeptBackgroundTasks::takeDue(qz::Moment now) {
  const auto next = nextDue();
  if (!next || *next > now) return {};
  std::vector<BackgroundTaskRequest> due;
  defaults_.update([&](Values& values) {
    due = requestsIn(values);  // of this moment: another process may have been quicker
    std::erase_if(due, [now](const BackgroundTaskRequest& request) { return request.earliestBeginDate > now; });
    Values requests = dictionary(values);
    for (const BackgroundTaskRequest& request : due) requests.erase(nameOf(request));
    if (requests.empty())
      values.erase(key);
    else
      values.insert_or_assign(key, std::move(requests));
  });
  return due;
}

std::optional<qz::Moment> KeptBackgroundTasks::nextDue() const {
  const auto requests = requestsIn(defaults_.values());
  return requests.empty() ? std::nullopt : std::optional(requests.front().earliestBeginDate);
}

}  // namespace habitra
