#include "Platform/ObjectStore/ValueTransformer.h"

#include <map>
#include <mutex>

namespace kestrona {

namespace {
struct Registry {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<const ValueTransformer>, std::less<>> transformers;
};

Registry& registry() {
  static Registry instance;
  return instance;
}
}  // namespace

void ValueTransformer::setValueTransformer(std::shared_ptr<const ValueTransformer> transformer, std::string name) {
  auto& shared = registry();
  std::lock_guard lock(shared.mutex);
  if (transformer) {
    shared.transformers[std::move(name)] = std::move(transformer);
  } else {
    shared.transformers.erase(name);
  }
}

std::shared_ptr<const ValueTransformer> ValueTransformer::valueTransformerForName(std::string_view name) {
  auto& shared = registry();
  std::lock_guard lock(shared.mutex);
  auto found = shared.transformers.find(name);
  return found == shared.transformers.end() ? nullptr : found->second;
}

}  // namespace kestrona
