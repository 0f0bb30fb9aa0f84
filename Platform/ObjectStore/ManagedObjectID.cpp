#include "Platform/ObjectStore/ManagedObjectID.h"

#include <atomic>

#include "Platform/ObjectStore/ManagedObjectModel.h"

namespace kestrona {

namespace {
std::atomic<std::int64_t> nextTemporaryNumber{1};
}

ManagedObjectID::ManagedObjectID(const UUID& store, std::shared_ptr<const EntityDescription> entity,
                                 bool temporary, std::int64_t key)
    : store_(store), entity_(std::move(entity)), temporary_(temporary), key_(key) {}

ManagedObjectID ManagedObjectID::permanent(const UUID& storeIdentifier,
                                           std::shared_ptr<const EntityDescription> entity,
                                           std::int64_t primaryKey) {
  return ManagedObjectID(storeIdentifier, std::move(entity), false, primaryKey);
}

ManagedObjectID ManagedObjectID::makeTemporary(const UUID& storeIdentifier,
                                               std::shared_ptr<const EntityDescription> entity) {
  return ManagedObjectID(storeIdentifier, std::move(entity), true, nextTemporaryNumber.fetch_add(1));
}

std::string ManagedObjectID::URIRepresentation() const {
  return "x-kestrona://" + store_.uuidString() + "/" + entity_->name() + "/" + (temporary_ ? "t" : "p") +
         std::to_string(key_);
}

bool operator==(const ManagedObjectID& lhs, const ManagedObjectID& rhs) noexcept {
  return lhs.key_ == rhs.key_ && lhs.temporary_ == rhs.temporary_ && lhs.store_ == rhs.store_ &&
         (lhs.entity_ == rhs.entity_ || &lhs.entity_->rootEntity() == &rhs.entity_->rootEntity() ||
          lhs.entity_->rootEntity().name() == rhs.entity_->rootEntity().name());
}

bool operator<(const ManagedObjectID& lhs, const ManagedObjectID& rhs) noexcept {
  if (lhs.store_ != rhs.store_) return lhs.store_ < rhs.store_;
  const auto& leftRoot = lhs.entity_->rootEntity().name();
  const auto& rightRoot = rhs.entity_->rootEntity().name();
  if (leftRoot != rightRoot) return leftRoot < rightRoot;
  if (lhs.temporary_ != rhs.temporary_) return rhs.temporary_;
  return lhs.key_ < rhs.key_;
}

std::size_t ManagedObjectID::hashValue() const noexcept {
  std::size_t hash = std::hash<UUID>{}(store_);
  hash ^= entity_->hierarchyHash() + 0x9e3779b97f4a7c15ULL + (hash << 6);
  hash ^= std::hash<std::int64_t>{}(temporary_ ? -key_ : key_) + 0x9e3779b97f4a7c15ULL + (hash << 6);
  return hash;
}

}  // namespace kestrona
