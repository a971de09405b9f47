#include <HabitraModel/HabitraNSPersistentCloudKitContainer.h>

#include <utility>

namespace habitra {

HabitraNSPersistentCloudKitContainer::HabitraNSPersistentCloudKitContainer(
    ContainerLocation location, std::shared_ptr<StoreMaintenance> maintenance)
    : maintenance_(std::move(maintenance)), location_(std::move(location)) {}

HabitraNSPersistentCloudKitContainer::HabitraNSPersistentCloudKitContainer(ContainerLocation location,
                                                                           std::shared_ptr<const qz::Clock> clock)
    : HabitraNSPersistentCloudKitContainer(
          std::move(location), std::make_shared<StoreMaintenance>(std::move(clock), MaintenanceLock::defaultPatience,
                                                                  std::make_shared<qz::NotificationCenter>())) {}

HabitraNSPersistentCloudKitContainer::~HabitraNSPersistentCloudKitContainer() = default;

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

bool HabitraNSPersistentCloudKitContainer::isOpen() const { return present() != nullptr; }

bool HabitraNSPersistentCloudKitContainer::isOwnWriter(const std::string& writer) const {
  const std::scoped_lock lock(mutex_);
  return writers_.contains(writer);
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

std::shared_ptr<Store> HabitraNSPersistentCloudKitContainer::present() const {
  const std::scoped_lock lock(mutex_);
  return store_;
}

std::shared_ptr<Store> HabitraNSPersistentCloudKitContainer::open(bool mayMake) {
  if (auto store = present()) return store;
  std::shared_ptr<Store> result;
  // Held until the store is here, so that maintenance finds it and can close it.
  maintenance_->underTurn([&] {
    for (;;) {
      const ContainerLocation place = location();
      std::shared_ptr<Store> opened = maintenance_->open(place, mayMake);
      const std::scoped_lock lock(mutex_);
      if (store_ == nullptr && location_ != place) continue;
      if (store_ == nullptr) install(std::move(opened));  // else another thread has been quicker
      result = store_;
      return;
    }
  });
  return result;
}

void HabitraNSPersistentCloudKitContainer::install(std::shared_ptr<Store> store) {
  store_ = std::move(store);
  if (store_ != nullptr) writers_.insert(store_->writer());
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
