// Feeds arbitrary bytes as a user-defaults file. Reading never fails: a
// damaged file is read as empty and kept aside. After a synchronize, the
// file holds exactly what the instance holds, so a fresh instance reads the
// same values back. A failed write throws, which the fuzzer reports as a
// crash: writing into its own temporary folder must always work.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "Platform/Logging/LogHandler.h"
#include "Platform/Logging/LoggingSystem.h"
#include "Platform/UserDefaults/PropertyValueCoding.h"
#include "Platform/UserDefaults/UserDefaults.h"

namespace {

const std::filesystem::path& directory() {
  static const std::filesystem::path path = [] {
    std::string pattern = (std::filesystem::temp_directory_path() / "kestrona-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    return std::filesystem::path(pattern);
  }();
  return path;
}

// A damaged file is logged; thousands of lines a second would only slow the
// run down.
class DiscardingLogHandler final : public kestrona::LogHandler {
 public:
  void log(const kestrona::LogRecord&) noexcept override {}
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  kestrona::LoggingSystem::bootstrap([](const std::string&) { return std::make_shared<DiscardingLogHandler>(); });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kestrona;
  std::filesystem::remove_all(directory());
  std::filesystem::create_directories(directory());
  {
    std::ofstream file(directory() / "fuzz.json", std::ios::binary);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  const auto defaults = UserDefaults::make("fuzz", directory());
  defaults->set(PropertyValue(std::int64_t{1}), "fuzz.written");
  defaults->synchronize();
  // Compared in their JSON form: a stored NaN is equal to itself there.
  const auto reread = UserDefaults::make("fuzz", directory())->dictionaryRepresentation();
  if (encodePropertyValue(reread) != encodePropertyValue(defaults->dictionaryRepresentation())) std::abort();
  return 0;
}
