#pragma once

#include "smbus/Recording.pb.h"

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>

namespace Bus {

// A recording that can't be read. The text names the file, the byte and the reason.
struct RecordingError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

using HandleEntry = std::function<void( const SmbusRecording::Entry & )>;

// A recording of bounded size consists of two files: this one has the entries before those of the
// other.
std::string earlierFile( const std::string &path );

// Calls back with each entry in order, those of the earlier file first. A start that only shows
// that the same run goes on in the next file is left out. Throws RecordingError when the file can't
// be opened, and after the last valid entry of a damaged file.
void readRecording( const std::string &path, const HandleEntry & );

// Where the last whole entry ends. What follows is the beginning of an entry, whose writer ended
// before its end. Throws RecordingError when the file can't be opened or is not a recording.
size_t endOfRecording( const std::string &path );

} // namespace Bus
