// What people and scripts get to see of a simulation. With JSON it is one object on one line.
#pragma once

#include "smbus/Control.pb.h"

#include <string>

namespace SmbusClient {

std::string formatState( const SmbusControl::State &, bool json );
std::string formatQuantity( const SmbusControl::Quantity &, bool json );
std::string formatTransfer( const SmbusControl::Transfer &, bool json );

} // namespace SmbusClient
