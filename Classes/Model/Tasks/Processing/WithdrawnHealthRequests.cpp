#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Tasks/Processing/WithdrawnHealthRequests.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>
#include <HabitraModel/Undo/EarlierValues.h>

#include <algorithm>

namespace habitra {

namespace {

/// Requests that went with their task stay as they are in the health store.
bool removesTask(const PersistentHistoryTransaction& transaction) {
  return std::ranges::any_of(transaction.changes, [](const StoredChange& change) {
    return change.entity == EntityNumber::task && change.kind == ChangeKind::removal;
  });
}

}  // namespace

WithdrawnHealthRequests::WithdrawnHealthRequests(StoreContext& context,
                                                 const std::vector<PersistentHistoryTransaction>& transactions) {
  Removed removed;
  std::vector<ObjectID> inserted;
  for (const PersistentHistoryTransaction& transaction : transactions) read(context, transaction, removed, inserted);
  for (const auto& [request, sample] : removed)
    if (context.find<HealthKitRequestEntity>(request) == nullptr) withdrawn_.push_back(sample);
  for (const ObjectID request : inserted) {
    const auto* const row = context.find<HealthKitRequestEntity>(request);
    if (row == nullptr || row->status != health_request_status::done) continue;
    if (auto again = HealthWriteRequest::of(*row)) broughtBack_.push_back(std::move(again->sample));
  }
}

void WithdrawnHealthRequests::read(StoreContext& context, const PersistentHistoryTransaction& transaction,
                                   Removed& removed, std::vector<ObjectID>& inserted) {
  const bool isWithTask = removesTask(transaction);
  EarlierValues values(context, transaction.transaction, "the sample of a HealthKit request");
  for (const StoredChange& change : transaction.changes) {
    if (change.entity != EntityNumber::healthKitRequest) continue;
    if (change.kind == ChangeKind::insertion) inserted.push_back(change.object);
    if (change.kind != ChangeKind::removal || isWithTask) continue;
    HealthKitRequestEntity row;
    if (!values.readIfKnown(change, HealthKitRequestEntity::description(), &row)) continue;
    if (const auto request = HealthWriteRequest::of(row))
      removed.insert_or_assign(change.object, request->sample.identifier);
  }
}

}  // namespace habitra
