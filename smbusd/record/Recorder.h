#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Clock.h"
#include "smbus/Recording.pb.h"
#include "smbusd/record/FailureFiles.h"

#include <cstdint>
#include <fstream>
#include <mutex>
#include <optional>
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
   // With `kept` bytes, file and earlier file (Bus::earlierFile) together take at most so many:
   // when the file has half of them, it becomes the earlier one, in place of that. What is around a
   // failure is then kept in files of its own.
   Recorder( const std::string &path, const std::string &version, const Bus::Clock &,
             std::optional<uint64_t> kept = {} );

   // A write error is logged once, and the recording ends.
   void write( const Smbus::TransactionRequest &, const Smbus::TransactionResponse &,
               Bus::Clock::Time begun, Bus::Clock::Time took );

 private:
   void open();
   void startAnew();
   bool append( const std::string &frame );

   const std::string path_;
   const Bus::Clock &clock_;
   const Bus::Clock::Time start_;
   const std::optional<uint64_t> kept_;
   const std::string
      startFrame_; // every file begins with it, since times count from the same start
   std::optional<FailureFiles> failures_;
   std::mutex mutex_;
   std::ofstream file_;
   uint64_t written_ = 0; // bytes in the file
};

} // namespace Smbusd
