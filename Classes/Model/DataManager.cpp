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
      standardDefaults_(defaults(home_, KeyValueDefaults::standardFileName)),
      sharedDefaults_(defaults(home_, KeyValueDefaults::sharedFileName)),
      notifications_(std::make_shared<qz::NotificationCenter>()),
      maintenance_(std::make_shared<StoreMaintenance>(clock_, patience, notifications_)),
      cloudPersistentContainer_(std::make_shared<Container>(cloudLocation(local), maintenance_)),
      localPersistentContainer_(std::make_shared<Container>(local, maintenance_)),
      cloudSync_(std::make_shared<CloudSync>(notifications_)) {
  maintenance_->setInterruption([this] { beginInterruption(); }, [this] { endInterruption(); });
}

DataManager::~DataManager() {
  cloudSync_->stop();
  // Containers may be kept by others, and maintained by them.
  maintenance_->setInterruption(nullptr, nullptr);
}

bool DataManager::isCloudSyncOn() const { return Settings(nullptr, sharedDefaults_, nullptr).get(settings::cloudSync); }

const std::shared_ptr<DataManager::Container>& DataManager::activeContainer() const {
  return isCloudSyncOn() ? cloudPersistentContainer_ : localPersistentContainer_;
}

std::optional<std::string> DataManager::cloudContainer() const {
  return sharedDefaults_->get<std::string>(cloudContainerKey);
}

void DataManager::describe(Container& container, const ContainerLocation& location) {
  const auto& cloud = location.cloudContainer();
  qz::log::info("Configuring the store {}, CloudKit: {}", location.description(), cloud ? *cloud : "(none)");
  if (container.location() != location) container.setLocation(location);
}

void DataManager::configureStoreDescription(Container& container, const ContainerLocation& location,
                                            const std::function<void(std::exception_ptr)>& completion) {
  std::exception_ptr failure;
  try {
    describe(container, location);
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
    if (container == localPersistentContainer_) {
      adoptEarlyStore();
      describe(*container, container->location());
    } else if (const auto file = container->location().file()) {
      describe(*container, ContainerLocation::url(*file, cloudContainer()));
    }
    std::shared_ptr<Store> store = mayMake ? container->store() : container->storeForReading();
    // While a store is open nobody can switch; until it is, somebody may have.
    if (container == activeContainer()) return store;
    container->close();
  }
}

void DataManager::adoptEarlyStore() {
  const auto isMissing = [this] {
    const auto file = localPersistentContainer_->location().file();
    return file && !std::filesystem::exists(*file);
  };
  if (!isMissing() || !std::filesystem::exists(home_ / fileName(StoreFile::production))) return;
  maintenance_->migrate([&](CoreDataMigrator& migrator) {
    if (!isMissing()) return;  // another thread has been quicker
    if (const auto adopted = migrator.adoptProductionStore(home_))
      localPersistentContainer_->setLocation(ContainerLocation::url(*adopted));
  });
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
  maintenance_->underTurn([&] {
    (void)activeStore(true);
    observer_.reset();
    observation_ = {target, std::move(handler), std::move(merge)};
    startObserving();
  });
}

void DataManager::stopObservingChanges() {
  maintenance_->underTurn([this] {
    observer_.reset();
    observation_.reset();
  });
}

void DataManager::startObserving() {
  // Opening may be maintenance, which would end an observer that is here already; and it may begin one by itself.
  const std::shared_ptr<Store> store = activeStore(true);
  if (observer_ != nullptr) return;
  auto observer = std::make_unique<PersistentHistoryObserver>(
      observation_->target, standardDefaults_, activeContainer(), observation_->handler, observation_->merge);
  observer->start();
  observer_ = std::move(observer);
}

void DataManager::beginInterruption() {
  observer_.reset();
  localPersistentContainer_->close();
  cloudPersistentContainer_->close();
}

void DataManager::endInterruption() noexcept {
  if (!observation_ || observer_ != nullptr) return;
  try {
    startObserving();
  } catch (const std::exception& error) {
    qz::log::error("Changes by others cannot be observed any more: {}", error.what());
  }
}

void DataManager::setupImportObserver() {
  cloudSync_->setupImportObserver(*cloudPersistentContainer_, [this] { deduplicate(); });
}

}  // namespace habitra
