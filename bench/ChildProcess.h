// A process that a benchmark uses. The destructor ends it.
#pragma once

#include <functional>
#include <sys/types.h>

class ChildProcess {
 public:
   // Runs body in a child process, which ends when body returns.
   explicit ChildProcess( const std::function<void()> &body );
   ~ChildProcess();
   ChildProcess( const ChildProcess & ) = delete;
   ChildProcess &operator=( const ChildProcess & ) = delete;

   pid_t id() const { return pid_; }

 private:
   pid_t pid_;
};
