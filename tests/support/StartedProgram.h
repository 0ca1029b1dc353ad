#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace TestSupport {

struct ProgramSettings {
   // Files for the output, which may be the same. Pipes of StartedProgram if empty.
   std::string outputFile{};
   std::string errorFile{};
   // Output, errors and input are a terminal of StartedProgram.
   bool onTerminal = false;
   size_t columns = 120, rows = 30; // of that terminal
   // "NAME=value", in place of the test's own or in addition to it.
   std::vector<std::string> environment{};
};

// A program that runs at the same time as the test. The destructor ends it. It never reads the
// test's own input: it has an empty one, or its own terminal.
class StartedProgram {
 public:
   // The program's path first.
   explicit StartedProgram( const std::vector<std::string> &command,
                            const ProgramSettings &settings = {} );
   ~StartedProgram();
   StartedProgram( const StartedProgram & ) = delete;
   StartedProgram &operator=( const StartedProgram & ) = delete;

   // Pipes. Reads standard error until these words come. Returns false when it ends without them.
   bool waitForError( const std::string &words );
   // Whether there is output that was not read yet.
   bool hasOutput() const;

   // The terminal.
   void type( const std::string &keys ) const;
   // Waits until it shows `text`. Returns what was printed since the last call.
   std::string waitForScreen( const std::string &text );
   int terminal() const { return terminal_; }

   pid_t pid() const { return pid_; }
   void signal( int number ) const;
   // Waits for its end. Returns the exit code; or minus the number of the signal that ended it.
   int wait();
   // What came through the pipes; complete after wait().
   const std::string &output() const { return output_; }
   const std::string &errors() const { return errors_; }

 private:
   pid_t pid_ = -1;
   int outputPipe_ = -1;
   int errorPipe_ = -1;
   int terminal_ = -1;
   std::string output_;
   std::string errors_;
};

} // namespace TestSupport
