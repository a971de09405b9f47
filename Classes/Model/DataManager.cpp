#include <HabitraModel/DataManager.h>
#include <HabitraModel/Settings/Settings.h>
#include <QZLog/Log.h>

#include <cstdlib>
#include <mutex>

namespace habitra {

namespace {

/// The store of the cloud lies beside the local one.
DataManager::ContainerLocation cloudLocation(const DataManager::ContainerLocation& local) {
  if (!local.file()) return local;
  return DataManager::ContainerLocation::url(local.file()->parent_path() /
                                             DataManager::fileName(DataManager::StoreFile::cloudKit));
}

std::shared_ptr<KeyValueDefaults> defaults(const std::filesystem::path& home, std::string_view name) {
  return home.empty() ? KeyValueDefaults::inMemory() : KeyValueDefaults::file(home / name);
}

}  // namespace

std::string_view DataManager::fileName(StoreFile file) {
  switch (file) {
    case StoreFile::cloudKit: return "Habitra-CloudKit.sqlite";
    case StoreFile::local: break;
    case StoreFile::production: return "Habitra-Production.sqlite";
  }
  return "Habitra-Local.sqlite";
}

DataManager::Environment DataManager::processEnvironment() {
  return [](const std::string& name) -> std::optional<std::string> {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) return std::nullopt;
    return value;
  };
}

std::filesystem::path DataManager::homeDirectory(const Environment& environment) {
  const auto path = [&environment](const std::string& name) {
    return std::filesystem::path(environment(name).value_or(std::string()));
  };
  if (const auto own = path("HABITRA_HOME"); !own.empty()) return own;
  if (const auto data = path("XDG_DATA_HOME"); data.is_absolute()) return data / "habitra";
  if (const auto home = path("HOME"); !home.empty()) return home / ".local/share/habitra";
  throw qz::Error("cannot tell where to keep habits: neither HABITRA_HOME nor HOME is set");
}

DataManager::ContainerLocation DataManager::storeLocation(const std::filesystem::path& home) {
  return ContainerLocation::url(home / fileName(StoreFile::local));
}

DataManager::DataManager(const ContainerLocation& local, std::shared_ptr<const qz::Clock> clock,
                         std::chrono::milliseconds patience)
    : home_(local.file() ? local.file()->parent_path() : std::filesystem::path()),
      clock_(std::move(clock)),
      patience_(patience),
      standardDefaults_(defaults(home_, KeyValueDefaults::standardFileName)),
      sharedDefaults_(defaults(home_, KeyValueDefaults::sharedFileName)),
      cloudPersistentContainer_(std::make_shared<Container>(cloudLocation(local), clock_)),
      localPersistentContainer_(std::make_shared<Container>(local, clock_)),
      maintenanceQueue_("org.habitra.datamanager.maintenance"),
      ckQueue_("org.habitra.datamanager.cloudkit") {
  const auto bringUpToDate = [this](const std::filesystem::path& file) { this->bringUpToDate(file); };
  cloudPersistentContainer_->setMigration(bringUpToDate);
  localPersistentContainer_->setMigration(bringUpToDate);
}

DataManager::~DataManager() { stopObservingChanges(); }

bool DataManager::isCloudSyncOn() const { return Settings(nullptr, sharedDefaults_, nullptr).get(settings::cloudSync); }

const std::shared_ptr<DataManager::Container>& DataManager::activeContainer() const {
  return isCloudSyncOn() ? cloudPersistentContainer_ : localPersistentContainer_;
}

void DataManager::configureStoreDescription(Container& container, const ContainerLocation& location,
                                            const std::function<void(std::exception_ptr)>& completion) {
  const auto& cloud = location.cloudContainer();
  qz::log::info("Configuring the store {}, CloudKit: {}", location.description(), cloud ? *cloud : "(none)");
  std::exception_ptr failure;
  try {
    container.setLocation(location);
    (void)container.store();
  } catch (...) {
    failure = std::current_exception();
  }
  completion(failure);
}

std::shared_ptr<Store> DataManager::activeStore(bool mayMake) {
  for (;;) {
    const std::shared_ptr<Container>& container = activeContainer();
    if (container->isOpen()) return container->store();
    if (container == localPersistentContainer_) adoptEarlyStore();
    std::shared_ptr<Store> store = mayMake ? container->store() : container->storeForReading();
    // While a store is open nobody can switch; until it is, somebody may have.
    if (container == activeContainer()) return store;
    container->close();
  }
}

void DataManager::adoptEarlyStore() {
  const auto file = localPersistentContainer_->location().file();
  if (!file || std::filesystem::exists(*file)) return;
  if (const auto adopted = CoreDataMigrator(clock_, {.patience = patience_}).adoptProductionStore(home_))
    localPersistentContainer_->setLocation(ContainerLocation::url(*adopted));
}

std::unique_ptr<StoreContext> DataManager::context() { return std::make_unique<StoreContext>(activeStore(true)); }

std::unique_ptr<StoreContext> DataManager::contextForReading() {
  auto store = activeStore(false);
  return store == nullptr ? nullptr : std::make_unique<StoreContext>(std::move(store));
}

qz::UniqueID DataManager::generateUniqueTaskId(StoreContext& context, const qz::UniqueID& requestedId) const {
  if (context.find<TaskEntity>("uniqueId", requestedId.text()) == nullptr) return requestedId;
  qz::log::info("Received duplicate ID, generating");
  return qz::UniqueID::generate(clock_->now());
}

void DataManager::observeChanges(Author target, PersistentHistoryObserver::Handler handler,
                                 PersistentHistoryObserver::Merge merge) {
  (void)activeStore(true);
  auto observer = std::make_unique<PersistentHistoryObserver>(target, standardDefaults_, activeContainer(),
                                                              std::move(handler), std::move(merge));
  const std::scoped_lock lock(observerMutex_);
  observer_ = std::move(observer);
  observer_->start();
}

void DataManager::stopObservingChanges() {
  const std::scoped_lock lock(observerMutex_);
  observer_.reset();
}

}  // namespace habitra
