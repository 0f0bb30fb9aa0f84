#include "Platform/Intents/AppIntent.h"

#include "Platform/RunLoop/Async.h"

namespace kestrona {
namespace {

asio::awaitable<void> performAndDrop(AnyAppIntent intent) { co_await intent.perform(); }

}  // namespace

void AnyAppIntent::run(MainLoop& loop, Completion completion) const {
  spawn(loop, performAndDrop(*this), std::move(completion));
}

}  // namespace kestrona
