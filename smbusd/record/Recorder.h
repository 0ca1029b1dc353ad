#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Clock.h"
#include "smbus/Recording.pb.h"

#include <fstream>
#include <mutex>
#include <string>

namespace Smbusd {

// Appends transactions with their answers and times to a file, each as soon as it has ended.
// Thread-safe.
class Recorder {
 public:
   // Times count from now. The clock outlives the recorder. A new file is for its owner alone: what
   // passes on a bus may be a secret. Adds to a recording that is there; an unfinished entry at its
   // end is cut off first. Throws std::runtime_error when the file is something else, or can't be
   // written.
   Recorder( const std::string &path, const std::string &version, const Bus::Clock & );

   // A write error is logged once, and the recording ends.
   void write( const Smbus::TransactionRequest &, const Smbus::TransactionResponse &,
               Bus::Clock::Time begun, Bus::Clock::Time took );

 private:
   bool append( const SmbusRecording::Entry & );

   const std::string path_;
   const Bus::Clock::Time start_;
   std::mutex mutex_;
   std::ofstream file_;
};

} // namespace Smbusd
