// What people and scripts get to see. With JSON it is one object on one line.
#pragma once

#include "orbis-smbus/Size.h"
#include "orbis-smbus/Target.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace SmbusClient {

// A register's answer, or why there is none.
struct Reading {
   std::string data;
   std::string error;
};

// "0x19 0x80", or the one number of a word. No register: a byte was received.
std::string formatReading( const Target &, std::optional<uint32_t> offset, const Size &,
                           const std::string &data, bool json );
std::string formatWritten( const Target &, bool json );
std::string formatFailure( const std::string &error, bool json );

// A table of registers, with their bytes as text beside it where they are single ones.
std::string formatDump( const Target &, const Size &, const std::map<uint32_t, Reading> &,
                        bool json );

// A table of addresses: the address where a chip answers, -- where none does, ?? where the answer
// is an error, which is told below.
std::string formatScan( const Bus::RootBusId &, const std::map<uint8_t, Reading> &, bool json );

// Nobody answered at the address.
bool isAbsent( const Reading & );

} // namespace SmbusClient
