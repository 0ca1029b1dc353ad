#pragma once

#include "support/TempFolder.h"

#include <string>
#include <sys/types.h>
#include <vector>

// A run of orbis-host with the scripted plug-in. The destructor kills it if it still runs.
class Program {
 public:
   enum class Output { Files, Terminal };

   // The scripts are in `folder`. The output goes to out.txt and err.txt there, or to a terminal of
   // this object.
   Program( const TempFolder &folder, const std::vector<std::string> &arguments,
            Output output = Output::Files );
   // The same, with the socket of a running serve.
   Program( const TempFolder &folder, const std::vector<std::string> &arguments,
            const Program &serve );
   ~Program();
   Program( const Program & ) = delete;
   Program &operator=( const Program & ) = delete;

   // Waits for the end. Returns the exit code, or 128 plus the signal.
   int exitCode();
   void signal( int number ) const;
   void type( const std::string &keys ) const;

   std::string out() const { return folder_.read( "out.txt" ); }
   std::string err() const { return folder_.read( "err.txt" ); }
   // Waits until the terminal shows `text`. Returns what was printed since the last call.
   std::string waitForScreen( const std::string &text );
   // Waits until out.txt or err.txt has `text` at or after `start`. Returns the position behind it.
   size_t waitFor( const std::string &file, const std::string &text, size_t start = 0 ) const;

   pid_t process() const { return process_; }
   int terminal() const { return terminal_; }
   // The process with the plug-in, or -1.
   pid_t child() const;

 private:
   void start( const std::vector<std::string> &arguments, Output output,
               const std::filesystem::path &socket );

   const TempFolder &folder_;
   pid_t process_ = -1;
   int terminal_ = -1;
};
