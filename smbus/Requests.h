// A client's requests, for one chip and the multiplexers before it.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/RootBusId.h"
#include "smbus/SegmentPath.h"

#include <cstdint>

namespace Bus {

// Appends a request without data.
Smbus::Request &addRequest( Smbus::TransactionRequest &transaction, const RootBusId &bus,
                            uint8_t address, Smbus::RequestType type, uint32_t offset,
                            uint32_t length );
// Append the selections of a path, and their ends, the innermost first.
void open( Smbus::TransactionRequest &transaction, const RootBusId &bus, const SegmentPath &path );
void close( Smbus::TransactionRequest &transaction, const RootBusId &bus, const SegmentPath &path );

} // namespace Bus
