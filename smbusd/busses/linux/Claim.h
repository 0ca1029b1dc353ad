#pragma once

#include <sys/types.h>

#include <string>

namespace Smbusd {

// Claims a part of a device for this process, until the process ends or closes the file. Returns
// why not: another process has claimed it. Empty: it is ours. The file must be open for writing.
std::string claim( int file, off_t start, off_t size );

} // namespace Smbusd
