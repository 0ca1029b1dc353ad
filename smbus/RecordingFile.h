#pragma once

#include "smbus/Recording.pb.h"

#include <functional>
#include <stdexcept>
#include <string>

namespace Bus {

// A recording that can't be read. The text names the file, the byte and the reason.
struct RecordingError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// Hands over one entry after another, up to where the file ends or makes no sense. Throws
// RecordingError then, and when there is no such file.
void readRecording( const std::string &path,
                    const std::function<void( const SmbusRecording::Entry & )> & );

} // namespace Bus
