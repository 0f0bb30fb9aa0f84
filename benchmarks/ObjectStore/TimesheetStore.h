// A store of the benchmarks' timesheet model: time entries spread evenly
// over two years from November 2023 and over 50 tasks (a tenth of them
// archived), saved through a context and opened again, as the application
// meets a store that has been filled. The file lies on the build tree's
// disk, not /tmp, so that a save's flush reaches a disk; it is removed with
// the store.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "Platform/ObjectStore/ManagedObjectContext.h"

namespace kestrona::benchmarks {

class TimesheetStore {
 public:
  static constexpr int kTasks = 50;
  static constexpr double kStart = 1'700'000'000;
  static constexpr double kYear = 365 * 86'400.0;

  explicit TimesheetStore(int sessions);
  ~TimesheetStore();
  TimesheetStore(const TimesheetStore&) = delete;
  TimesheetStore& operator=(const TimesheetStore&) = delete;

  static std::shared_ptr<const ManagedObjectModel> model();
  std::shared_ptr<ManagedObjectContext> newContext() const;

  std::filesystem::path directory;
  std::filesystem::path url;
  std::shared_ptr<PersistentStoreCoordinator> coordinator;
  std::vector<ManagedObjectID> taskIDs;
};

}  // namespace kestrona::benchmarks
