// The records that the host holds: each is embedded in its object, right behind the object's
// virtual-table pointer, and leads back to it through priv.
#pragma once

#include "pl.h"

#include <cstddef>

namespace Component::LogicalDevice {

template <typename Object, typename Record>
Object *objectOf( Record *record ) {
   return static_cast<Object *>( record->priv );
}

// The tables are a contract with 32-bit hosts: their sizes are told for that ABI.
template <typename Table>
constexpr bool isTableSize( size_t bytesIn32Bit ) {
   return sizeof( void * ) != 4 || sizeof( Table ) == bytesIn32Bit;
}

} // namespace Component::LogicalDevice
