// The records that the host gets. Each is part of its object, right after the virtual table
// pointer, and its priv points to the object.
#pragma once

#include "pl.h"

#include <cstddef>

namespace Component::LogicalDevice {

template <typename Object, typename Record>
Object *objectOf( Record *record ) {
   return static_cast<Object *>( record->priv );
}

// 32-bit hosts rely on the sizes of the tables. bytesIn32Bit is the size in that ABI.
template <typename Table>
constexpr bool isTableSize( size_t bytesIn32Bit ) {
   return sizeof( void * ) != 4 || sizeof( Table ) == bytesIn32Bit;
}

} // namespace Component::LogicalDevice
