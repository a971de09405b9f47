#include <HabitraModel/DataManager.h>
#include <QZDateTime/ISO8601.h>
#include <QZLog/Log.h>

#include <exception>
#include <utility>

// Mirroring: what the data manager knows of it. All of it belongs to the cloud queue.
namespace habitra {

namespace {

std::string_view name(SyncEvent::Type type) {
  switch (type) {
    case SyncEvent::Type::setup: return "setup";
    case SyncEvent::Type::importing: return "importing";
    case SyncEvent::Type::exporting: break;
  }
  return "exporting";
}

}  // namespace

void DataManager::setupImportObserver() {
  ckQueue_.sync([this] {
    if (eventChangedObserver_ != nullptr) return;
    eventChangedObserver_ = cloudPersistentContainer_->addObserver(
        [this](const SyncEvent& event) { ckQueue_.async([this, event] { handle(event); }); });
  });
}

void DataManager::handle(const SyncEvent& event) {
  qz::log::info("Sync event type={} event.startDate={}, event.endDate={}", name(event.type),
                qz::iso8601(event.startDate), event.endDate ? qz::iso8601(*event.endDate) : "nil");
  if (!event.endDate) {
    currentSyncEvents_.insert_or_assign(event.identifier, event);
    notifications_.post(syncEventsUpdated);
    return;
  }
  currentSyncEvents_.erase(event.identifier);
  if (event.error) {
    currentSyncError_ = event.error;
    currentSyncErrorDate_ = event.endDate;
    if (!std::exchange(hasCapturedCKError_, true))
      qz::log::warning("Mirroring failed ({}): {}", name(event.type), *event.error);
  } else if (event.type != SyncEvent::Type::setup) {
    currentSyncError_.reset();
    currentSyncErrorDate_.reset();
  }
  if (event.type == SyncEvent::Type::importing && !event.error)
    currentImportDeduplicationEvents_.insert(event.identifier);
  notifications_.post(syncEventsUpdated);
  if (currentImportDeduplicationEvents_.contains(event.identifier)) deduplicateAfter(event);
}

void DataManager::deduplicateAfter(const SyncEvent& import) {
  try {
    deduplicate();
  } catch (const std::exception& error) {
    // The next import, or maintenance, does it.
    qz::log::warning("What was imported could not be searched for doubles: {}", error.what());
  }
  currentImportDeduplicationEvents_.erase(import.identifier);
  notifications_.post(syncEventsUpdated);
}

std::map<qz::UniqueID, SyncEvent> DataManager::currentSyncEvents() const {
  return ckQueue_.sync([this] { return currentSyncEvents_; });
}

std::set<qz::UniqueID> DataManager::currentImportDeduplicationEvents() const {
  return ckQueue_.sync([this] { return currentImportDeduplicationEvents_; });
}

std::set<DataManager::ActiveSyncEvent> DataManager::activeSyncEvents() const {
  return ckQueue_.sync([this] {
    std::set<ActiveSyncEvent> active;
    for (const auto& [identifier, event] : currentSyncEvents_) {
      if (event.type == SyncEvent::Type::importing) active.insert(ActiveSyncEvent::importing);
      if (event.type == SyncEvent::Type::exporting) active.insert(ActiveSyncEvent::exporting);
    }
    if (!currentImportDeduplicationEvents_.empty()) active.insert(ActiveSyncEvent::deduplicating);
    return active;
  });
}

std::optional<std::string> DataManager::currentSyncError() const {
  return ckQueue_.sync([this] { return currentSyncError_; });
}

std::optional<qz::Moment> DataManager::currentSyncErrorDate() const {
  return ckQueue_.sync([this] { return currentSyncErrorDate_; });
}

bool DataManager::hasCapturedCKError() const {
  return ckQueue_.sync([this] { return hasCapturedCKError_; });
}

void DataManager::setCloudContainer(std::shared_ptr<CloudContainer> container) {
  ckQueue_.sync([&] {
    ckObserver_.reset();
    ckContainer_ = std::move(container);
    ckStatus_ = CloudAccountStatus::couldNotDetermine;
    if (ckContainer_ == nullptr) return;
    ckObserver_ = ckContainer_->observeAccount([this] { ckQueue_.async([this] { readAccountStatus(); }); });
    ckQueue_.async([this] { readAccountStatus(); });
  });
}

void DataManager::readAccountStatus() {
  if (ckContainer_ == nullptr) return;
  try {
    ckStatus_ = ckContainer_->accountStatus();
  } catch (const std::exception& error) {
    ckStatus_ = CloudAccountStatus::couldNotDetermine;
    qz::log::warning("The account of {} cannot be asked: {}", ckContainer_->identifier(), error.what());
  }
}

CloudAccountStatus DataManager::ckStatus() const {
  return ckQueue_.sync([this] { return ckStatus_; });
}

}  // namespace habitra
