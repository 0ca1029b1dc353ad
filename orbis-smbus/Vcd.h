// Transfers as SDA and SCL in a value change dump (IEEE 1364, clause 18), which wave viewers and
// protocol decoders read.
#pragma once

#include "smbus/Control.pb.h"

#include <google/protobuf/repeated_ptr_field.h>

#include <string>

namespace SmbusClient {

// Two signals for each bus, named SCL and SDA in a scope with the bus's name. The lines are drawn
// from what was sent, at the bus's clock: a transfer begins when it did, or right behind the one
// before it when it took less time than its bits. A bit that is not known is an x. I/O ports have
// no lines.
std::string formatVcd( const google::protobuf::RepeatedPtrField<SmbusControl::Transfer> & );

} // namespace SmbusClient
