#include "SharedCore/Timer/KeyPathChangeObserver.h"

namespace kestrona {

AnyPublisher<KeyPathChangeObserver::Event> KeyPathChangeObserver::publisher() {
  return changes_.eraseToAnyPublisher().handleEvents([self = shared_from_this()] { self->stop(); });
}

void KeyPathChangeObserver::stop() noexcept {
  for (auto& observation : observations_) observation.invalidate();
  observations_.clear();
  keyPaths_.clear();
}

}  // namespace kestrona
