// What the commands print, for people or, as JSON, for scripts: one object on one line.
#pragma once

#include "orbis-smbus/Target.h"
#include "smbus/Control.pb.h"
#include "smbus/Recording.pb.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace SmbusClient {

// A register's bytes, or why it can't be read.
struct Reading {
   std::string data;
   std::string error;
};

// "0x19 0x80", or one number for a word. Without a register: a byte that was received.
std::string formatReading( const Target &, std::optional<uint32_t> offset, const Size &,
                           const std::string &data, bool json );
std::string formatWritten( const Target &, bool json );
std::string formatFailure( const std::string &error, bool json );

// A table of registers; single bytes are shown as text, too.
std::string formatDump( const Target &, const Size &, const std::map<uint32_t, Reading> &,
                        bool json );

// A table of addresses: the address if a chip answers, -- if none does, ?? if the answer is an
// error. The errors follow the table.
std::string formatScan( const Bus::RootBusId &, const std::map<uint8_t, Reading> &, bool json );

// No chip answered at the address.
bool isAbsent( const Reading & );

// A simulated board. In SimOutput.cpp.
std::string formatState( const SmbusControl::State &, bool json );
std::string formatQuantity( const SmbusControl::Quantity &, bool json );
std::string formatTransfer( const SmbusControl::Transfer &, bool json );

// A recorded transaction: its requests and what each of them read. In RecordingOutput.cpp.
std::string formatEntry( const SmbusRecording::Entry &, bool json );

} // namespace SmbusClient
