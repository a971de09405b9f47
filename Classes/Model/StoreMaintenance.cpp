#include <HabitraModel/Store/StoreError.h>
#include <HabitraModel/StoreMaintenance.h>
#include <QZLog/Log.h>

#include <exception>
#include <string>
#include <utility>

namespace habitra {

void announce(qz::NotificationCenter& notifications, std::string_view name) noexcept {
  try {
    notifications.post(name);
  } catch (const std::exception& error) {
    qz::log::error("Somebody who was told of {} failed: {}", name, error.what());
  }
}

StoreMaintenance::StoreMaintenance(std::shared_ptr<const qz::Clock> clock, std::chrono::milliseconds patience,
                                   std::shared_ptr<qz::NotificationCenter> notifications)
    : clock_(std::move(clock)),
      patience_(patience),
      notifications_(std::move(notifications)),
      maintenanceQueue_("org.habitra.datamanager.maintenance") {}

bool StoreMaintenance::isInMaintenanceMode() const {
  return maintenanceQueue_.sync([this] { return inMaintenanceMode_ > 0; });
}

bool StoreMaintenance::isMigrating() const {
  return maintenanceQueue_.sync([this] { return migrator_ != nullptr; });
}

std::unique_lock<std::recursive_timed_mutex> StoreMaintenance::takeTurn() {
  std::unique_lock turn(turn_, patience_);
  if (!turn.owns_lock())
    throw StoreError(StoreError::Kind::busy,
                     "the store is still under maintenance by another part of this program; try again when it is done");
  return turn;
}

void StoreMaintenance::perform(const std::function<void()>& work) {
  std::exception_ptr failure;
  bool isOutermost = false;
  {
    const auto turn = takeTurn();
    isOutermost = maintenanceQueue_.sync([this] { return ++inMaintenanceMode_ == 1; });
    try {
      if (begin_) begin_();
      work();
    } catch (...) {
      failure = std::current_exception();
    }
    maintenanceQueue_.sync([this] { --inMaintenanceMode_; });
    if (isOutermost && end_) end_();
  }
  if (isOutermost) announce(*notifications_, maintenanceDidFinish);
  if (failure) std::rethrow_exception(failure);
}

void StoreMaintenance::migrate(const std::function<void(CoreDataMigrator&)>& work) {
  perform([&] {
    const auto migrator = std::make_shared<CoreDataMigrator>(makeMigrator());
    maintenanceQueue_.sync([&] { migrator_ = migrator; });
    std::exception_ptr failure;
    try {
      work(*migrator);
    } catch (...) {
      failure = std::current_exception();
    }
    maintenanceQueue_.sync([this] { migrator_.reset(); });
    if (failure) std::rethrow_exception(failure);
  });
}

void StoreMaintenance::underTurn(const std::function<void()>& work) {
  const auto turn = takeTurn();
  work();
}

void StoreMaintenance::setInterruption(std::function<void()> begin, std::function<void()> end) {
  const std::scoped_lock turn(turn_);
  begin_ = std::move(begin);
  end_ = std::move(end);
}

std::shared_ptr<Store> StoreMaintenance::open(const ContainerLocation& location, bool mayMake) {
  const auto turn = takeTurn();
  try {
    return openNow(location, mayMake);
  } catch (const StoreError& error) {
    if (error.kind() != StoreError::Kind::olderVersion) throw;
  }
  migrate([&location](CoreDataMigrator& migrator) { migrator.migrate(*location.file()); });
  return openNow(location, mayMake);
}

std::shared_ptr<Store> StoreMaintenance::openNow(const ContainerLocation& location, bool mayMake) const {
  const auto& file = location.file();
  if (!file) return Store::inMemory(clock_);
  return mayMake ? Store::open(*file, clock_, patience_) : Store::openForReading(*file, clock_, patience_);
}

CoreDataMigrator StoreMaintenance::makeMigrator() const { return {clock_, {.patience = patience_}}; }

}  // namespace habitra
