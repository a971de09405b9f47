#include <HabitraModel/Store/StoreError.h>
#include <HabitraModel/StoreMaintenance.h>
#include <QZLog/Log.h>

#include <exception>
#include <utility>

namespace habitra {

void announce(qz::NotificationCenter& notifications, std::string_view name) noexcept {
  try {
    notifications.post(name);
  } catch (const std::exception& error) {
    qz::log::error("Somebody who was told of {} failed: {}", name, error.what());
  }
}

/// A thread's time at the gate, which may be nested. What has finished within the outermost is told of when other
/// threads may go on, since whoever is told may wait for them.
class StoreMaintenance::Turn {
 public:
  explicit Turn(StoreMaintenance& gate) : gate_(gate) {
    std::unique_lock lock(gate.turn_);
    if (!gate.turnEnded_.wait_for(lock, gate.patience_, [&] { return gate.mayTakeTurn(); }))
      throw StoreError(StoreError::Kind::busy,
                       "the store is still under maintenance by another part of this program; try again when it is "
                       "done");
    gate.turnOf_ = std::this_thread::get_id();
    ++gate.nestedTurns_;
  }
  ~Turn() {
    bool hasFinished = false;
    {
      const std::scoped_lock lock(gate_.turn_);
      if (--gate_.nestedTurns_ == 0) hasFinished = std::exchange(gate_.hasFinished_, false);
    }
    gate_.turnEnded_.notify_all();
    if (hasFinished) announce(*gate_.notifications_, maintenanceDidFinish);
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  StoreMaintenance& gate_;
};

StoreMaintenance::StoreMaintenance(std::shared_ptr<const qz::Clock> clock, std::chrono::milliseconds patience,
                                   std::shared_ptr<qz::NotificationCenter> notifications)
    : clock_(std::move(clock)),
      patience_(patience),
      notifications_(std::move(notifications)),
      maintenanceQueue_("org.habitra.datamanager.maintenance") {}

bool StoreMaintenance::mayTakeTurn() const { return nestedTurns_ == 0 || turnOf_ == std::this_thread::get_id(); }

bool StoreMaintenance::isInMaintenanceMode() const {
  return maintenanceQueue_.sync([this] { return inMaintenanceMode_ > 0; });
}

bool StoreMaintenance::isMigrating() const {
  return maintenanceQueue_.sync([this] { return migrator_ != nullptr; });
}

void StoreMaintenance::perform(const std::function<void()>& work) {
  const Turn turn(*this);
  const bool isOutermost = maintenanceQueue_.sync([this] { return ++inMaintenanceMode_ == 1; });
  std::exception_ptr failure;
  try {
    if (begin_) begin_();
    work();
  } catch (...) {
    failure = std::current_exception();
  }
  // A store that must be migrated before it can be taken up again is a part of this maintenance, not the next one.
  if (isOutermost && end_) end_();
  maintenanceQueue_.sync([this] { --inMaintenanceMode_; });
  if (isOutermost) hasFinished_ = true;
  if (failure) std::rethrow_exception(failure);
}

void StoreMaintenance::migrate(const std::function<void(CoreDataMigrator&)>& work) {
  perform([&] {
    const auto migrator = std::make_shared<CoreDataMigrator>(clock_, CoreDataMigrator::Options{.patience = patience_});
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
  const Turn turn(*this);
  work();
}

void StoreMaintenance::setInterruption(std::function<void()> begin, std::function<void()> end) {
  std::unique_lock lock(turn_);
  turnEnded_.wait(lock, [this] { return mayTakeTurn(); });
  begin_ = std::move(begin);
  end_ = std::move(end);
}

std::shared_ptr<Store> StoreMaintenance::open(const ContainerLocation& location, bool mayMake) {
  const Turn turn(*this);
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

}  // namespace habitra
