// Expecting a typed failure.
//
// thrownBy<E>(work) runs work and returns the E it threw. When work returns
// normally, or throws anything other than an E, the test fails at the
// caller's line and the result is empty, so a test goes on to check the
// error's kind(), domain and user info only when there is one:
//
//   auto error = testing::thrownBy<StoreError>([&] { context.save(); });
//   ASSERT_TRUE(error);
//   EXPECT_EQ(error->kind(), StoreErrorCode::managedObjectMergeError);
//
// errorIn<E>(failure) does the same for an error already caught as a
// std::exception_ptr, as a completion hands it on; a null pointer (success)
// fails the test. Neither ever looks at an error's text.
#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <optional>
#include <source_location>
#include <utility>

namespace kestrona::testing {

template <class E>
std::optional<E> errorIn(std::exception_ptr failure, std::source_location where = std::source_location::current()) {
  const std::string expected = ::testing::internal::GetTypeName<E>();
  if (!failure) {
    ADD_FAILURE_AT(where.file_name(), where.line()) << "expected " << expected << ", but nothing failed";
    return std::nullopt;
  }
  try {
    std::rethrow_exception(failure);
  } catch (const E& error) {
    return error;
  } catch (const std::exception& other) {
    ADD_FAILURE_AT(where.file_name(), where.line()) << "expected " << expected << ", but caught "
                                                    << ::testing::internal::GetTypeName<decltype(other)>() << ": "
                                                    << other.what();
  } catch (...) {
    ADD_FAILURE_AT(where.file_name(), where.line()) << "expected " << expected << ", but caught something else";
  }
  return std::nullopt;
}

template <class E, class Work>
std::optional<E> thrownBy(Work&& work, std::source_location where = std::source_location::current()) {
  try {
    std::forward<Work>(work)();
  } catch (...) {
    return errorIn<E>(std::current_exception(), where);
  }
  return errorIn<E>(nullptr, where);
}

}  // namespace kestrona::testing
