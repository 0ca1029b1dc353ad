#pragma once

#include "smbus/Recording.pb.h"

#include <string>

namespace SmbusClient {

// A recorded transaction with its requests and what each read, for people; as JSON one object on
// one line.
std::string formatEntry( const SmbusRecording::Entry &, bool json );

} // namespace SmbusClient
