// The coroutine form of CoreDataStack's untracked write.
//
// co_await executeUntrackedWriteOperation(stack, block) queues block exactly
// as stack.executeUntrackedWriteOperation(block, completion) does, suspends
// the caller until the queue has run it, and resumes the caller on its own
// executor (the main loop, for a coroutine started there) with:
// - the error of block or save, thrown (detached, see CoreDataStack.h);
// - else the block's value;
// - else, when the block gave no value (std::nullopt, or a block returning
//   nothing), WriteOperationError unexpectedNilAsResult, although nothing
//   went wrong in the store.
//
// It lives apart from CoreDataStack.h because it includes Asio. The stack
// must outlive the await.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "Platform/RunLoop/Async.h"
#include "SharedCore/DataProviders/CoreDataStack.h"
#include "SharedCore/DataProviders/WriteOperationError.h"

namespace kestrona {

template <typename Block>
asio::awaitable<WriteOperationValue<Block>> executeUntrackedWriteOperation(CoreDataStack& stack, Block block) {
  using BlockValue = WriteOperationValue<Block>;
  using Result = std::invoke_result_t<Block&, ManagedObjectContext&>;
  auto sharedBlock = std::make_shared<Block>(std::move(block));
  std::function<void(Continuation<BlockValue>)> start = [&stack, sharedBlock](Continuation<BlockValue> continuation) {
    stack.executeUntrackedWriteOperation(
        [sharedBlock](ManagedObjectContext& context) -> Result { return (*sharedBlock)(context); },
        [continuation](std::exception_ptr error, std::optional<BlockValue> value) {
          if (error) {
            continuation.resume(error);
          } else if (value) {
            continuation.resume(std::move(*value));
          } else {
            continuation.resume(
                std::make_exception_ptr(WriteOperationError(WriteOperationErrorCode::unexpectedNilAsResult)));
          }
        });
  };
  co_return co_await withContinuation<BlockValue>(std::move(start));
}

}  // namespace kestrona
