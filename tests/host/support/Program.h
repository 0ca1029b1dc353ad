#pragma once

#include "support/TempFolder.h"

#include <string>
#include <sys/types.h>
#include <vector>

// A run of orbis-host on the scripted plug-in; killed with this object if it still goes on.
class Program {
 public:
   enum class Output { Files, Terminal };

   // The scripts are in `folder`; what it prints goes to out.txt and err.txt there, or to a
   // terminal that this object holds.
   Program( const TempFolder &folder, const std::vector<std::string> &arguments,
            Output output = Output::Files );
   // The same, beside a serve that goes on: with the socket of that.
   Program( const TempFolder &folder, const std::vector<std::string> &arguments,
            const Program &serve );
   ~Program();
   Program( const Program & ) = delete;
   Program &operator=( const Program & ) = delete;

   // Waits for the end; the exit code, or 128 and the signal that ended it.
   int exitCode();
   void signal( int number ) const;
   void type( const std::string &keys ) const;

   std::string out() const { return folder_.read( "out.txt" ); }
   std::string err() const { return folder_.read( "err.txt" ); }
   // What was printed since the last call; on a terminal waits until that holds `text`.
   std::string waitForScreen( const std::string &text );
   // Waits until out.txt or err.txt ends with or holds `text` from `start` on; the new end.
   size_t waitFor( const std::string &file, const std::string &text, size_t start = 0 ) const;

   pid_t process() const { return process_; }
   int terminal() const { return terminal_; }
   // The process that holds the plug-in; -1 when there is none.
   pid_t child() const;

 private:
   void start( const std::vector<std::string> &arguments, Output output,
               const std::filesystem::path &socket );

   const TempFolder &folder_;
   pid_t process_ = -1;
   int terminal_ = -1;
};
