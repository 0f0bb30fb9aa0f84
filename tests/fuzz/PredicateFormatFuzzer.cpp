// Feeds arbitrary format strings to the predicate parser. Every input is
// either a predicate or a PredicateFormatError; a predicate's readable form
// is printed too, since logs print every predicate they are given.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/ObjectStore/Predicate.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kestrona;
  const std::string_view format(reinterpret_cast<const char*>(data), size);
  // Enough arguments of each kind for formats with several %@.
  const std::vector<Value> arguments{Value("text"), Value(std::int64_t{42}), Value(2.5), Value(),
                                     Value(std::vector<Value>{Value("a"), Value(std::int64_t{1})})};
  try {
    const Predicate predicate = Predicate::withFormat(format, arguments);
    (void)predicate.predicateFormat();
  } catch (const PredicateFormatError&) {
  }
  return 0;
}
