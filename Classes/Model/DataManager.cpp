#include <HabitraModel/DataManager.h>
#include <QZLog/Log.h>

#include <cstdlib>
#include <mutex>

namespace habitra {

/// The store of a location, once it is open.
struct DataManager::Container {
  std::mutex mutex;
  std::shared_ptr<Store> store;
};

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

DataManager::DataManager(ContainerLocation location, std::shared_ptr<const qz::Clock> clock)
    : location_(std::move(location)), clock_(std::move(clock)), container_(std::make_unique<Container>()) {}

DataManager::~DataManager() = default;

std::filesystem::path DataManager::home() const {
  return location_.file() ? location_.file()->parent_path() : std::filesystem::path();
}

std::unique_ptr<StoreContext> DataManager::context() {
  const std::scoped_lock lock(container_->mutex);
  if (container_->store == nullptr)
    container_->store = location_.file() ? Store::open(*location_.file(), clock_) : Store::inMemory(clock_);
  return std::make_unique<StoreContext>(container_->store);
}

std::unique_ptr<StoreContext> DataManager::contextForReading() {
  const std::scoped_lock lock(container_->mutex);
  if (container_->store == nullptr && location_.file())
    container_->store = Store::openForReading(*location_.file(), clock_);
  return container_->store == nullptr ? nullptr : std::make_unique<StoreContext>(container_->store);
}

qz::UniqueID DataManager::generateUniqueTaskId(StoreContext& context, const qz::UniqueID& requestedId) const {
  if (context.find<TaskEntity>("uniqueId", requestedId.text()) == nullptr) return requestedId;
  qz::log::info("Received duplicate ID, generating");
  return qz::UniqueID::generate(clock_->now());
}

}  // namespace habitra
