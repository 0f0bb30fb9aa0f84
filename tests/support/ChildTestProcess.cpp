#include "tests/support/ChildTestProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

extern char** environ;

namespace kestrona::testing {

namespace {
constexpr int kParentDescriptor = 3;
}  // namespace

ChildTestProcess::ChildTestProcess(const std::string& testName, const std::string& markerVariable,
                                   const std::map<std::string, std::string>& environment) {
  int toChild[2];
  int fromChild[2];
  if (pipe2(toChild, O_CLOEXEC) != 0) return;
  if (pipe2(fromChild, O_CLOEXEC) != 0) {
    close(toChild[0]);
    close(toChild[1]);
    return;
  }
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) variables.emplace_back(*variable);
  variables.push_back(markerVariable + "=1");
  for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);
  std::vector<char*> childEnvironment;
  for (auto& variable : variables) childEnvironment.push_back(variable.data());
  childEnvironment.push_back(nullptr);

  const std::string executable = std::filesystem::read_symlink("/proc/self/exe").string();
  std::string filter = "--gtest_filter=" + testName;
  char* const arguments[] = {const_cast<char*>(executable.c_str()), filter.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fromChild[1], kParentDescriptor);
  if (posix_spawn(&child_, executable.c_str(), &actions, nullptr, arguments, childEnvironment.data()) != 0) {
    child_ = -1;
  }
  posix_spawn_file_actions_destroy(&actions);
  close(toChild[0]);
  close(fromChild[1]);
  input_ = toChild[1];
  output_ = fromChild[0];
}

ChildTestProcess::~ChildTestProcess() {
  closeInput();
  wait();
  if (output_ >= 0) close(output_);
}

std::optional<std::string> ChildTestProcess::readLine() {
  while (true) {
    if (auto end = buffered_.find('\n'); end != std::string::npos) {
      std::string line = buffered_.substr(0, end);
      buffered_.erase(0, end + 1);
      return line;
    }
    char buffer[256];
    ssize_t count = output_ < 0 ? 0 : read(output_, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return std::nullopt;
    buffered_.append(buffer, static_cast<std::size_t>(count));
  }
}

void ChildTestProcess::closeInput() {
  if (input_ >= 0) close(input_);
  input_ = -1;
}

int ChildTestProcess::wait() {
  if (child_ < 0) return -1;
  int status = 0;
  pid_t waited = 0;
  do {
    waited = waitpid(child_, &status, 0);
  } while (waited < 0 && errno == EINTR);
  child_ = -1;
  if (waited < 0 || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

void tellParent(const std::string& line) {
  std::string text = line + "\n";
  std::size_t written = 0;
  while (written < text.size()) {
    ssize_t count = write(kParentDescriptor, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    written += static_cast<std::size_t>(count);
  }
}

void waitForEndOfInput() {
  char buffer[64];
  while (true) {
    ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
    if (count == 0 || (count < 0 && errno != EINTR)) return;
  }
}

}  // namespace kestrona::testing
