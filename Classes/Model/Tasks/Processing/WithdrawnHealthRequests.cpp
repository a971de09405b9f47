#include <HabitraModel/PersistentHistoryFetcher.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Tasks/Processing/PendingHealthRequests.h>
#include <HabitraModel/Tasks/Processing/WithdrawnHealthRequests.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace habitra {

namespace {

/// Reads the changes of one entity in these transactions, and in the context's unit where that is the last of them.
void readChanges(StoreContext& context, EntityNumber entity, std::int64_t after, std::int64_t last,
                 const std::function<void(const StoredChange&)>& sink) {
  context.readChanges(entity, after, last, sink);
  if (last <= context.sequence()) return;
  context.readChanges(last, [&](const StoredChange& change) {
    if (change.entity == entity) sink(change);
  });
}

/// The transactions that removed a task. Requests that went with it stay as they are in the health store.
std::set<std::int64_t> removalsOfTasks(StoreContext& context, std::int64_t after, std::int64_t last) {
  std::set<std::int64_t> transactions;
  readChanges(context, EntityNumber::task, after, last, [&](const StoredChange& change) {
    if (change.kind == ChangeKind::removal) transactions.insert(change.sequence);
  });
  return transactions;
}

}  // namespace

WithdrawnHealthRequests::WithdrawnHealthRequests(StoreContext& context, std::int64_t after, std::int64_t last) {
  std::vector<StoredChange> removed;
  std::vector<ObjectID> inserted;
  readChanges(context, EntityNumber::healthKitRequest, after, last, [&](const StoredChange& change) {
    ++changes_;
    if (change.kind == ChangeKind::insertion) inserted.push_back(change.object);
    if (change.kind == ChangeKind::removal) removed.push_back(change);
  });
  const auto withTask = removed.empty() ? std::set<std::int64_t>() : removalsOfTasks(context, after, last);
  std::map<ObjectID, qz::UniqueID> samples;
  for (const StoredChange& change : removed) {
    HealthKitRequestEntity row;
    if (withTask.contains(change.sequence) || !restoreBefore(change, row)) continue;
    if (const auto request = HealthWriteRequest::of(row))
      samples.insert_or_assign(change.object, request->sample.identifier);
  }
  for (const auto& [request, sample] : samples)
    if (context.find<HealthKitRequestEntity>(request) == nullptr) withdrawn_.push_back(sample);
  for (const ObjectID request : inserted) {
    const auto* const row = context.find<HealthKitRequestEntity>(request);
    if (row == nullptr || row->status != health_request_status::done) continue;
    if (auto again = HealthWriteRequest::of(*row)) broughtBack_.push_back(std::move(again->sample));
  }
}

std::set<qz::UniqueID> withdrawnSamples(StoreContext& context, const KeyValueDefaults& standardDefaults) {
  const auto text = standardDefaults.get<std::string>(PendingHealthRequests::historyKey);
  const auto kept = text ? HistoryToken::fromText(*text) : std::nullopt;
  if (!kept || !PersistentHistoryFetcher(context).reachesBackTo(*kept)) return {};
  const std::int64_t last = context.sequence() + (context.isInUnit() ? 1 : 0);
  const WithdrawnHealthRequests found(context, kept->sequence, last);
  return {found.withdrawn().begin(), found.withdrawn().end()};
}

}  // namespace habitra
