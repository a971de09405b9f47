#include <HabitraModel/CloudSync.h>
#include <HabitraModel/StoreMaintenance.h>
#include <QZDateTime/ISO8601.h>
#include <QZLog/Log.h>

#include <exception>
#include <utility>

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

CloudSync::CloudSync(std::shared_ptr<qz::NotificationCenter> notifications)
    : notifications_(std::move(notifications)), ckQueue_("org.habitra.datamanager.cloudkit") {}

// Whoever posts may still hold an observer that was let go of: it then finds nobody.

void CloudSync::setupImportObserver(HabitraNSPersistentCloudKitContainer& container,
                                    std::function<void()> deduplicate) {
  ckQueue_.sync([&] { deduplicate_ = std::move(deduplicate); });
  const std::scoped_lock lock(mutex_);
  if (eventChangedObserver_ != nullptr) return;
  eventChangedObserver_ = container.addObserver([weak = weak_from_this()](const SyncEvent& event) {
    if (const auto self = weak.lock()) self->ckQueue_.async([self = self.get(), event] { self->handle(event); });
  });
}

void CloudSync::stop() {
  {
    const std::scoped_lock lock(mutex_);
    eventChangedObserver_.reset();
    ckObserver_.reset();
  }
  ckQueue_.sync([this] { deduplicate_ = nullptr; });
}

void CloudSync::handle(const SyncEvent& event) {
  qz::log::info("Sync event type={} event.startDate={}, event.endDate={}", name(event.type),
                qz::iso8601(event.startDate), event.endDate ? qz::iso8601(*event.endDate) : "nil");
  keep(event);
  announce(*notifications_, syncEventsUpdated);
  if (event.endDate && event.type == SyncEvent::Type::importing && !event.error) deduplicateAfter(event);
}

void CloudSync::keep(const SyncEvent& event) {
  const std::scoped_lock lock(mutex_);
  if (!event.endDate) {
    currentSyncEvents_.insert_or_assign(event.identifier, event);
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
}

void CloudSync::deduplicateAfter(const SyncEvent& import) {
  try {
    if (deduplicate_) deduplicate_();
  } catch (const std::exception& error) {
    // The next import, or maintenance, does it.
    qz::log::warning("What was imported could not be searched for doubles: {}", error.what());
  }
  {
    const std::scoped_lock lock(mutex_);
    currentImportDeduplicationEvents_.erase(import.identifier);
  }
  announce(*notifications_, syncEventsUpdated);
}

std::map<qz::UniqueID, SyncEvent> CloudSync::currentSyncEvents() const {
  const std::scoped_lock lock(mutex_);
  return currentSyncEvents_;
}

std::set<qz::UniqueID> CloudSync::currentImportDeduplicationEvents() const {
  const std::scoped_lock lock(mutex_);
  return currentImportDeduplicationEvents_;
}

std::set<CloudSync::ActiveSyncEvent> CloudSync::activeSyncEvents() const {
  const std::scoped_lock lock(mutex_);
  std::set<ActiveSyncEvent> active;
  for (const auto& [identifier, event] : currentSyncEvents_) {
    if (event.type == SyncEvent::Type::importing) active.insert(ActiveSyncEvent::importing);
    if (event.type == SyncEvent::Type::exporting) active.insert(ActiveSyncEvent::exporting);
  }
  if (!currentImportDeduplicationEvents_.empty()) active.insert(ActiveSyncEvent::deduplicating);
  return active;
}

std::optional<std::string> CloudSync::currentSyncError() const {
  const std::scoped_lock lock(mutex_);
  return currentSyncError_;
}

std::optional<qz::Moment> CloudSync::currentSyncErrorDate() const {
  const std::scoped_lock lock(mutex_);
  return currentSyncErrorDate_;
}

bool CloudSync::hasCapturedCKError() const {
  const std::scoped_lock lock(mutex_);
  return hasCapturedCKError_;
}

void CloudSync::setCloudContainer(std::shared_ptr<CloudContainer> container) {
  std::shared_ptr<void> observer;
  if (container != nullptr)
    observer = container->observeAccount([weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->ckQueue_.async([self = self.get()] { self->readAccountStatus(); });
    });
  {
    const std::scoped_lock lock(mutex_);
    ckContainer_ = std::move(container);
    ckObserver_.swap(observer);
    ckStatus_ = CloudAccountStatus::couldNotDetermine;
  }
  ckQueue_.async([this] { readAccountStatus(); });
}

void CloudSync::readAccountStatus() {
  std::shared_ptr<CloudContainer> container;
  {
    const std::scoped_lock lock(mutex_);
    container = ckContainer_;
  }
  if (container == nullptr) return;
  auto status = CloudAccountStatus::couldNotDetermine;
  try {
    status = container->accountStatus();
  } catch (const std::exception& error) {
    qz::log::warning("The account of {} cannot be asked: {}", container->identifier(), error.what());
  }
  const std::scoped_lock lock(mutex_);
  if (container == ckContainer_) ckStatus_ = status;
}

CloudAccountStatus CloudSync::ckStatus() const {
  const std::scoped_lock lock(mutex_);
  return ckStatus_;
}

}  // namespace habitra
