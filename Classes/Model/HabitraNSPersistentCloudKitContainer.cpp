#include <HabitraModel/HabitraNSPersistentCloudKitContainer.h>
#include <HabitraModel/Store/StoreError.h>

#include <utility>

namespace habitra {

HabitraNSPersistentCloudKitContainer::HabitraNSPersistentCloudKitContainer(ContainerLocation location,
                                                                           std::shared_ptr<const qz::Clock> clock)
    : clock_(std::move(clock)), location_(std::move(location)) {}

HabitraNSPersistentCloudKitContainer::~HabitraNSPersistentCloudKitContainer() = default;

void HabitraNSPersistentCloudKitContainer::setMigration(Migration migration) {
  const std::scoped_lock lock(mutex_);
  migration_ = std::move(migration);
}

ContainerLocation HabitraNSPersistentCloudKitContainer::location() const {
  const std::scoped_lock lock(mutex_);
  return location_;
}

void HabitraNSPersistentCloudKitContainer::setLocation(ContainerLocation location) {
  const std::scoped_lock lock(mutex_);
  location_ = std::move(location);
  store_.reset();
}

std::shared_ptr<Store> HabitraNSPersistentCloudKitContainer::store() { return open(true); }

std::shared_ptr<Store> HabitraNSPersistentCloudKitContainer::storeForReading() { return open(false); }

bool HabitraNSPersistentCloudKitContainer::isOpen() const {
  const std::scoped_lock lock(mutex_);
  return store_ != nullptr;
}

void HabitraNSPersistentCloudKitContainer::close() {
  const std::scoped_lock lock(mutex_);
  store_.reset();
}

std::unique_ptr<StoreContext> HabitraNSPersistentCloudKitContainer::newBackgroundContext() {
  return std::make_unique<StoreContext>(store());
}

std::unique_ptr<StoreContext> HabitraNSPersistentCloudKitContainer::newReadingContext() {
  auto opened = storeForReading();
  return opened == nullptr ? nullptr : std::make_unique<StoreContext>(std::move(opened));
}

std::shared_ptr<Store> HabitraNSPersistentCloudKitContainer::openAt(const ContainerLocation& location,
                                                                    bool mayMake) const {
  const auto& file = location.file();
  if (!file) return Store::inMemory(clock_);
  return mayMake ? Store::open(*file, clock_) : Store::openForReading(*file, clock_);
}

std::shared_ptr<Store> HabitraNSPersistentCloudKitContainer::open(bool mayMake) {
  std::unique_lock lock(mutex_);
  if (store_ == nullptr) {
    try {
      store_ = openAt(location_, mayMake);
    } catch (const StoreError& error) {
      if (error.kind() != StoreError::Kind::olderVersion || migration_ == nullptr) throw;
      const auto file = *location_.file();
      const Migration migration = migration_;
      // Maintenance closes stores, this one's as well.
      lock.unlock();
      migration(file);
      lock.lock();
      if (store_ == nullptr) store_ = openAt(location_, mayMake);
    }
  }
  return store_;
}

std::shared_ptr<void> HabitraNSPersistentCloudKitContainer::addObserver(EventObserver observer) {
  auto token = std::make_shared<const EventObserver>(std::move(observer));
  const std::scoped_lock lock(mutex_);
  std::erase_if(observers_, [](const auto& observed) { return observed.expired(); });
  observers_.push_back(token);
  return std::const_pointer_cast<EventObserver>(token);
}

void HabitraNSPersistentCloudKitContainer::post(const SyncEvent& event) {
  std::vector<std::shared_ptr<const EventObserver>> present;
  {
    const std::scoped_lock lock(mutex_);
    for (const auto& observed : observers_)
      if (auto observer = observed.lock()) present.push_back(std::move(observer));
  }
  for (const auto& observer : present) (*observer)(event);
}

}  // namespace habitra
