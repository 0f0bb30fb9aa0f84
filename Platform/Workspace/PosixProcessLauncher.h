// The real ProcessLauncher: posix_spawn, no shell, waited for on the main
// loop without blocking it.
//
// The program runs in a process group of its own, with standard input from
// /dev/null and this process's standard output and error. Its end is
// noticed through a process file descriptor (pidfd) watched by the main loop,
// or, on kernels without pidfd, by checking every 10 ms. At the time limit the
// whole process group is killed with SIGKILL and the program reaped; the
// outcome is then ProcessTimedOut, whatever status the kill produced.
//
// A launcher destroyed while programs run leaves them to finish their
// waits on the loop; a run whose waits the loop destroys unrun (the loop is
// destroyed first) kills and reaps its program on the way out.
//
// Threading: make it, call launch() and destroy it on the loop's thread. The
// loop must outlive every run started through it.
#pragma once

#include "Platform/RunLoop/MainLoop.h"
#include "Platform/Workspace/ProcessLauncher.h"

namespace kestrona {

class PosixProcessLauncher final : public ProcessLauncher {
 public:
  // How the end of a program is noticed. processDescriptor falls back on
  // polling by itself where the kernel has no pidfd; tests choose polling to
  // exercise that path on any kernel.
  enum class ExitWatch { processDescriptor, polling };

  explicit PosixProcessLauncher(MainLoop& loop, ExitWatch exitWatch = ExitWatch::processDescriptor)
      : loop_(loop), exitWatch_(exitWatch) {}

  void launch(ProcessLaunchRequest request, Completion completion) override;

 private:
  MainLoop& loop_;
  ExitWatch exitWatch_;
};

}  // namespace kestrona
