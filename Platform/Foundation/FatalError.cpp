#include "Platform/Foundation/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace kestrona {

void fatalError(std::string_view message, std::source_location location) {
  std::fprintf(stderr, "Fatal error: %.*s (%s:%u)\n", static_cast<int>(message.size()), message.data(),
               location.file_name(), static_cast<unsigned>(location.line()));
  std::fflush(stderr);
  std::abort();
}

}  // namespace kestrona
