#include "Platform/Notifications/NotificationCenter.h"

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace kestrona {

struct ObserverToken::Registry {
  struct Observer {
    std::uint64_t id;
    std::optional<std::string> name;
    const void* object;
    std::shared_ptr<const NotificationCenter::Block> block;
    // Cleared on removal, so that a delivery that took this observer before
    // the removal skips it.
    std::shared_ptr<std::atomic<bool>> active;
  };

  std::mutex mutex;
  std::uint64_t nextID = 1;
  // In registration order.
  std::vector<Observer> observers;

  void remove(std::uint64_t id) noexcept {
    std::lock_guard lock(mutex);
    for (auto it = observers.begin(); it != observers.end(); ++it) {
      if (it->id == id) {
        it->active->store(false);
        observers.erase(it);
        return;
      }
    }
  }
};

ObserverToken::ObserverToken(std::weak_ptr<Registry> registry, std::uint64_t id)
    : registry_(std::move(registry)), id_(id) {}

ObserverToken::ObserverToken(ObserverToken&& other) noexcept
    : registry_(std::move(other.registry_)), id_(std::exchange(other.id_, 0)) {}

ObserverToken& ObserverToken::operator=(ObserverToken&& other) noexcept {
  if (this != &other) {
    remove();
    registry_ = std::move(other.registry_);
    id_ = std::exchange(other.id_, 0);
  }
  return *this;
}

ObserverToken::~ObserverToken() { remove(); }

void ObserverToken::remove() noexcept {
  if (id_ == 0) return;
  if (auto registry = registry_.lock()) registry->remove(id_);
  registry_.reset();
  id_ = 0;
}

bool ObserverToken::isActive() const noexcept { return id_ != 0 && !registry_.expired(); }

NotificationCenter::NotificationCenter() : registry_(std::make_shared<ObserverToken::Registry>()) {}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

ObserverToken NotificationCenter::addObserver(std::optional<std::string> name, const void* object, Block block) {
  std::lock_guard lock(registry_->mutex);
  std::uint64_t id = registry_->nextID++;
  registry_->observers.push_back({id, std::move(name), object,
                                  std::make_shared<const Block>(std::move(block)),
                                  std::make_shared<std::atomic<bool>>(true)});
  return ObserverToken(registry_, id);
}

void NotificationCenter::post(const Notification& notification) {
  struct Delivery {
    std::shared_ptr<const Block> block;
    std::shared_ptr<std::atomic<bool>> active;
  };
  std::vector<Delivery> deliveries;
  {
    std::lock_guard lock(registry_->mutex);
    for (const auto& observer : registry_->observers) {
      bool nameMatches = !observer.name || *observer.name == notification.name;
      bool objectMatches = observer.object == nullptr || observer.object == notification.object;
      if (nameMatches && objectMatches) deliveries.push_back({observer.block, observer.active});
    }
  }
  // Blocks run without the lock, so they may post, add and remove observers.
  for (const Delivery& delivery : deliveries) {
    if (delivery.active->load()) (*delivery.block)(notification);
  }
}

void NotificationCenter::post(std::string name, const void* object, Notification::UserInfo userInfo) {
  post(Notification{std::move(name), object, std::move(userInfo)});
}

}  // namespace kestrona
