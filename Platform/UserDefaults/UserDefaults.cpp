#include "Platform/UserDefaults/UserDefaults.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Logging/Logger.h"
#include "Platform/UserDefaults/PropertyValueCoding.h"
#include "Platform/UserDefaults/UserDefaultsError.h"

namespace kestrona {

namespace {

// Never destroyed: shared instances write their last changes while the
// process ends, after other statics may be gone.
const Logger& logger() {
  static const Logger* const instance = new Logger("UserDefaults");
  return *instance;
}

void logError(std::string_view message, Logger::Metadata metadata) {
  logger().log(Logger::Level::error, message, metadata);
}

bool isValidDomain(std::string_view domain) {
  return !domain.empty() && domain != "." && domain != ".." && domain.find('/') == std::string_view::npos &&
         domain.find('\0') == std::string_view::npos;
}

std::string executableName() {
  std::error_code error;
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error || executable.filename().empty()) return "kestrona";
  return executable.filename().string();
}

struct SharedState {
  std::mutex mutex;
  std::string standardDomain;
  std::map<std::pair<std::filesystem::path, std::string>, std::shared_ptr<UserDefaults>> instances;
};

SharedState& sharedState() {
  static SharedState state;
  return state;
}

std::string lowercased(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return number;
}

std::optional<double> parseDouble(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return number;
}

// The first "<domain>.damaged-<n>.json" that names no file, taken
// atomically: link() fails rather than replace an existing file.
std::optional<std::filesystem::path> keepAside(const std::filesystem::path& file, const std::string& domain) {
  for (int number = 1; number < 10000; ++number) {
    const std::filesystem::path aside =
        file.parent_path() / (domain + ".damaged-" + std::to_string(number) + ".json");
    if (::link(file.c_str(), aside.c_str()) == 0) {
      if (::unlink(file.c_str()) != 0) {
        ::unlink(aside.c_str());
        return std::nullopt;
      }
      return aside;
    }
    if (errno != EEXIST) return std::nullopt;
  }
  return std::nullopt;
}

// The whole content of file, or the errno of the failure.
int readWholeFile(const std::filesystem::path& file, std::string& content) {
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  char buffer[16384];
  for (;;) {
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count == 0) break;
    if (count < 0) {
      if (errno == EINTR) continue;
      const int error = errno;
      ::close(descriptor);
      return error;
    }
    content.append(buffer, static_cast<std::size_t>(count));
  }
  ::close(descriptor);
  return 0;
}

bool writeAll(int descriptor, const std::string& text) {
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
    if (count < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    written += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

std::filesystem::path UserDefaults::defaultDirectory() {
  const char* configHome = std::getenv("XDG_CONFIG_HOME");
  // Relative values are to be ignored, as the base directory rules say.
  if (configHome != nullptr && *configHome == '/') return std::filesystem::path(configHome) / "kestrona";
  std::filesystem::path home;
  if (const char* homeVariable = std::getenv("HOME"); homeVariable != nullptr && *homeVariable != '\0') {
    home = homeVariable;
  } else {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr) {
      home = found->pw_dir;
    }
  }
  if (home.empty()) return {};
  return home / ".config" / "kestrona";
}

void UserDefaults::setStandardDomain(std::string domain) {
  SharedState& state = sharedState();
  std::lock_guard lock(state.mutex);
  state.standardDomain = std::move(domain);
}

std::string UserDefaults::standardDomain() {
  {
    SharedState& state = sharedState();
    std::lock_guard lock(state.mutex);
    if (!state.standardDomain.empty()) return state.standardDomain;
  }
  return executableName();
}

std::shared_ptr<UserDefaults> UserDefaults::standard() {
  std::shared_ptr<UserDefaults> defaults = forDomain(standardDomain());
  if (defaults == nullptr) fatalError("The standard user defaults domain cannot name a file.");
  return defaults;
}

std::shared_ptr<UserDefaults> UserDefaults::forDomain(std::string_view domain) {
  if (!isValidDomain(domain)) return nullptr;
  std::filesystem::path directory = defaultDirectory();
  SharedState& state = sharedState();
  std::lock_guard lock(state.mutex);
  auto key = std::make_pair(directory, std::string(domain));
  auto found = state.instances.find(key);
  if (found != state.instances.end()) return found->second;
  std::shared_ptr<UserDefaults> defaults(new UserDefaults(std::string(domain), std::move(directory)));
  state.instances.emplace(std::move(key), defaults);
  return defaults;
}

std::shared_ptr<UserDefaults> UserDefaults::make(std::string_view domain, std::filesystem::path directory) {
  if (!isValidDomain(domain)) return nullptr;
  return std::shared_ptr<UserDefaults>(new UserDefaults(std::string(domain), std::move(directory)));
}

UserDefaults::UserDefaults(std::string domain, std::filesystem::path directory)
    : domain_(std::move(domain)), directory_(std::move(directory)) {
  std::lock_guard lock(mutex_);
  values_ = readFileLocked();
}

UserDefaults::~UserDefaults() {
  if (changedKeys_.empty()) return;
  try {
    synchronize();
  } catch (...) {
    // Nothing may leave a destructor; a failure was logged where it happened.
  }
}

PropertyValue::Dictionary UserDefaults::readFileLocked() {
  if (directory_.empty()) return {};
  const std::filesystem::path file = fileURL();
  std::string content;
  if (const int error = readWholeFile(file, content); error != 0) {
    if (error == ENOENT) {
      fileMustNotBeReplaced_ = false;
      return {};
    }
    logError("Cannot read the user defaults file; it stays as it is and is not written",
             {{"domain", domain_}, {"file", file.string()}, {"error", std::strerror(error)}});
    fileMustNotBeReplaced_ = true;
    return {};
  }

  std::string problem;
  try {
    const nlohmann::json document = nlohmann::json::parse(content);
    if (!document.is_object()) throw PropertyValueCodingError("The file is not a JSON object");
    const auto version = document.find("version");
    if (version == document.end() || !version->is_number_integer()) {
      throw PropertyValueCodingError("The file has no version");
    }
    if (version->get<std::int64_t>() < 1 || version->get<std::int64_t>() > kFileFormatVersion) {
      throw PropertyValueCodingError("The file has version " + version->dump() + ", which this program cannot read");
    }
    const auto values = document.find("values");
    if (values == document.end() || !values->is_object()) throw PropertyValueCodingError("The file has no values");
    PropertyValue::Dictionary result;
    for (const auto& [key, value] : values->items()) result.emplace(key, decodePropertyValue(value));
    fileMustNotBeReplaced_ = false;
    return result;
  } catch (const nlohmann::json::exception& error) {
    problem = error.what();
  } catch (const PropertyValueCodingError& error) {
    problem = error.localizedDescription();
  }

  const std::optional<std::filesystem::path> aside = keepAside(file, domain_);
  if (aside) {
    logError("Damaged user defaults file kept aside; the domain reads as empty",
             {{"domain", domain_}, {"file", file.string()}, {"keptAs", aside->string()}, {"error", problem}});
    fileMustNotBeReplaced_ = false;
  } else {
    logError("Damaged user defaults file could not be kept aside; it stays as it is and is not written",
             {{"domain", domain_}, {"file", file.string()}, {"error", problem}});
    fileMustNotBeReplaced_ = true;
  }
  return {};
}

void UserDefaults::writeFileLocked(const PropertyValue::Dictionary& values) {
  const std::filesystem::path file = directory_.empty() ? std::filesystem::path() : fileURL();
  // Reported to the log, for callers that cannot act on the error, and thrown.
  auto fail = [&](UserDefaultsErrorCode code, const std::string& message, int error) {
    Logger::Metadata metadata{{"domain", domain_}, {"file", file.string()}};
    std::shared_ptr<const Error> underlying;
    if (error != 0) {
      metadata.emplace("error", std::strerror(error));
      underlying = std::make_shared<Error>("NSPOSIXErrorDomain", error, std::strerror(error));
    }
    logError(message, metadata);
    throw UserDefaultsError(code, message, file.string(), std::move(underlying));
  };
  if (directory_.empty()) {
    fail(UserDefaultsErrorCode::noDirectory,
         "No directory for user defaults: neither XDG_CONFIG_HOME nor a home directory is known", 0);
  }
  if (fileMustNotBeReplaced_) {
    fail(UserDefaultsErrorCode::fileNotReplaceable,
         "User defaults not written: the file in place could not be read or kept aside", 0);
  }

  nlohmann::json encoded = nlohmann::json::object();
  for (const auto& [key, value] : values) encoded[key] = encodePropertyValue(value);
  const nlohmann::json document{{"version", kFileFormatVersion}, {"values", std::move(encoded)}};
  std::string text;
  try {
    text = document.dump(2) + "\n";
  } catch (const nlohmann::json::type_error&) {
    // Only a text that is not UTF-8 gets here. Rather than let one such
    // value keep every other change out of the file for good, its invalid
    // bytes are written as U+FFFD.
    logError("A user defaults text is not UTF-8; its invalid bytes are written as U+FFFD", {{"domain", domain_}});
    text = document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
  }

  std::error_code directoryError;
  std::filesystem::create_directories(directory_, directoryError);
  std::string temporary = (directory_ / ("." + domain_ + ".json.XXXXXX")).string();
  const int descriptor = ::mkstemp(temporary.data());
  if (descriptor < 0) fail(UserDefaultsErrorCode::writeFailed, "Cannot create a temporary user defaults file", errno);
  ::fchmod(descriptor, S_IRUSR | S_IWUSR);
  const bool written = writeAll(descriptor, text) && ::fsync(descriptor) == 0;
  const int writeError = errno;
  ::close(descriptor);
  if (!written || ::rename(temporary.c_str(), file.c_str()) != 0) {
    const int error = written ? errno : writeError;
    ::unlink(temporary.c_str());
    fail(UserDefaultsErrorCode::writeFailed, "Cannot write the user defaults file", error);
  }
  // Make the rename itself durable.
  const int directoryDescriptor = ::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directoryDescriptor >= 0) {
    ::fsync(directoryDescriptor);
    ::close(directoryDescriptor);
  }
}

void UserDefaults::synchronize() {
  std::lock_guard lock(mutex_);
  PropertyValue::Dictionary merged = readFileLocked();
  if (changedKeys_.empty()) {
    values_ = std::move(merged);
    return;
  }
  for (const std::string& key : changedKeys_) {
    auto mine = values_.find(key);
    if (mine == values_.end()) {
      merged.erase(key);
    } else {
      merged.insert_or_assign(key, mine->second);
    }
  }
  values_ = merged;
  writeFileLocked(merged);
  changedKeys_.clear();
}

const PropertyValue* UserDefaults::findLocked(std::string_view key) const {
  auto found = values_.find(key);
  return found == values_.end() ? nullptr : &found->second;
}

std::optional<PropertyValue> UserDefaults::objectForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const PropertyValue* value = findLocked(key);
  if (value == nullptr) return std::nullopt;
  return *value;
}

bool UserDefaults::boolForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const PropertyValue* value = findLocked(key);
  if (value == nullptr) return false;
  if (const bool* flag = value->getIf<bool>()) return *flag;
  if (const std::int64_t* integer = value->getIf<std::int64_t>()) return *integer != 0;
  if (const double* number = value->getIf<double>()) return *number != 0;
  if (const std::string* text = value->getIf<std::string>()) {
    const std::string lower = lowercased(*text);
    if (lower == "true" || lower == "yes") return true;
    const std::optional<std::int64_t> integer = parseInteger(*text);
    return integer.has_value() && *integer != 0;
  }
  return false;
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const PropertyValue* value = findLocked(key);
  if (value == nullptr) return 0;
  if (const std::int64_t* integer = value->getIf<std::int64_t>()) return *integer;
  if (const bool* flag = value->getIf<bool>()) return *flag ? 1 : 0;
  if (const double* number = value->getIf<double>()) {
    // 2^63 is exactly representable; anything at or beyond it does not fit.
    constexpr double kLimit = 9223372036854775808.0;
    const double truncated = std::trunc(*number);
    if (!std::isfinite(truncated) || truncated >= kLimit || truncated < -kLimit) return 0;
    return static_cast<std::int64_t>(truncated);
  }
  if (const std::string* text = value->getIf<std::string>()) return parseInteger(*text).value_or(0);
  return 0;
}

double UserDefaults::doubleForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const PropertyValue* value = findLocked(key);
  if (value == nullptr) return 0;
  if (const double* number = value->getIf<double>()) return *number;
  if (const std::int64_t* integer = value->getIf<std::int64_t>()) return static_cast<double>(*integer);
  if (const bool* flag = value->getIf<bool>()) return *flag ? 1 : 0;
  if (const std::string* text = value->getIf<std::string>()) return parseDouble(*text).value_or(0);
  return 0;
}

namespace {

template <typename T>
std::optional<T> copyIf(const PropertyValue* value) {
  if (value == nullptr) return std::nullopt;
  const T* typed = value->getIf<T>();
  if (typed == nullptr) return std::nullopt;
  return *typed;
}

}  // namespace

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  return copyIf<std::string>(findLocked(key));
}

std::optional<PropertyValue::Data> UserDefaults::dataForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  return copyIf<PropertyValue::Data>(findLocked(key));
}

std::optional<Date> UserDefaults::dateForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  return copyIf<Date>(findLocked(key));
}

std::optional<PropertyValue::Array> UserDefaults::arrayForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  return copyIf<PropertyValue::Array>(findLocked(key));
}

std::optional<PropertyValue::Dictionary> UserDefaults::dictionaryForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  return copyIf<PropertyValue::Dictionary>(findLocked(key));
}

std::optional<std::vector<std::string>> UserDefaults::stringArrayForKey(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const PropertyValue* value = findLocked(key);
  if (value == nullptr) return std::nullopt;
  const PropertyValue::Array* array = value->getIf<PropertyValue::Array>();
  if (array == nullptr) return std::nullopt;
  std::vector<std::string> strings;
  strings.reserve(array->size());
  for (const PropertyValue& element : *array) {
    const std::string* text = element.getIf<std::string>();
    if (text == nullptr) return std::nullopt;
    strings.push_back(*text);
  }
  return strings;
}

PropertyValue::Dictionary UserDefaults::dictionaryRepresentation() const {
  std::lock_guard lock(mutex_);
  return values_;
}

void UserDefaults::set(PropertyValue value, std::string_view key) {
  std::lock_guard lock(mutex_);
  values_.insert_or_assign(std::string(key), std::move(value));
  changedKeys_.emplace(key);
}

void UserDefaults::removeObject(std::string_view key) {
  std::lock_guard lock(mutex_);
  if (auto found = values_.find(key); found != values_.end()) values_.erase(found);
  changedKeys_.emplace(key);
}

}  // namespace kestrona
