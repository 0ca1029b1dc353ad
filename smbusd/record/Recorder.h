#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Clock.h"
#include "smbus/Recording.pb.h"

#include <fstream>
#include <mutex>
#include <string>

namespace Smbusd {

// Writes transactions with their answers and times to the end of a file, each as soon as it is
// done. For all threads.
class Recorder {
 public:
   // Times count from the clock's now; it outlives the recorder. Throws std::runtime_error when the
   // file can't be written.
   Recorder( const std::string &path, const std::string &version, const Bus::Clock & );

   // When the file can't take it, that is logged once and the recording ends.
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
