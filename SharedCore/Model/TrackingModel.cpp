#include "SharedCore/Model/TrackingModel.h"

#include <memory>
#include <mutex>
#include <string>

#include "SharedCore/Model/ActivityLog/ALEntry.h"
#include "SharedCore/Model/ActivityLog/BrowserALEntry.h"
#include "SharedCore/Model/ActivityLog/DocumentAppALEntry.h"
#include "SharedCore/Model/Rules/Rule.h"
#include "SharedCore/Model/Rules/RuleCombination.h"
#include "SharedCore/Model/Rules/RuleSet.h"
#include "SharedCore/Model/Tracking/Folder.h"
#include "SharedCore/Model/Tracking/Session.h"
#include "SharedCore/Model/Tracking/Task.h"

namespace kestrona {

namespace {

template <typename Class>
void registerClass(std::string entityName) {
  ManagedObject::setClassForEntityName(std::move(entityName), [](ManagedObject::Construction construction) {
    return std::make_shared<Class>(std::move(construction));
  });
}

}  // namespace

void registerTrackingModelClasses() {
  static std::once_flag once;
  std::call_once(once, [] {
    registerClass<Task>("Task");
    registerClass<Folder>("Folder");
    registerClass<Session>("Session");
    registerClass<RuleSet>("RuleSet");
    registerClass<Rule>("Rule");
    registerClass<RuleCombination>("RuleCombination");
    registerClass<ALEntry>("ALEntry");
    registerClass<BrowserALEntry>("BrowserALEntry");
    registerClass<DocumentAppALEntry>("DocumentAppALEntry");
  });
}

}  // namespace kestrona
