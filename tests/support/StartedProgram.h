#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace TestSupport {

// A program that runs at the same time as the test. The destructor ends it.
class StartedProgram {
 public:
   // The program's path first.
   explicit StartedProgram( const std::vector<std::string> &command );
   ~StartedProgram();
   StartedProgram( const StartedProgram & ) = delete;
   StartedProgram &operator=( const StartedProgram & ) = delete;

   // Reads standard error until these words come. Returns false when it ends without them.
   bool waitForError( const std::string &words );
   // Whether there is output that was not read yet.
   bool hasOutput() const;
   pid_t pid() const { return pid_; }
   void signal( int number );
   // Waits for its end. Returns the exit code; or minus the number of the signal that ended it.
   int wait();
   // Both complete after wait().
   const std::string &output() const { return output_; }
   const std::string &errors() const { return errors_; }

 private:
   pid_t pid_ = -1;
   int outputPipe_ = -1;
   int errorPipe_ = -1;
   std::string output_;
   std::string errors_;
};

} // namespace TestSupport
