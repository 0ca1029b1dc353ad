#include "ChildProcess.h"

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

ChildProcess::ChildProcess( const std::function<void()> &body ) : pid_( fork() ) {
   if ( pid_ == 0 ) {
      prctl( PR_SET_PDEATHSIG, SIGKILL );
      body();
      _exit( 1 );
   }
}

ChildProcess::~ChildProcess() {
   kill( pid_, SIGTERM );
   waitpid( pid_, nullptr, 0 );
}
