// A SystemTimeSignalSource that signals when a test says so, as the
// operating system would.
#pragma once

#include "Platform/SystemTime/SystemTimeSignalSource.h"

namespace kestrona::testing {

class HandSignals final : public SystemTimeSignalSource {
 public:
  void start(Handler handler) override { handler_ = std::move(handler); }
  void stop() noexcept override { handler_ = nullptr; }
  void send(SystemTimeSignal signal) { handler_(signal); }

 private:
  Handler handler_;
};

}  // namespace kestrona::testing
