// What an entry of simulation.json says of any pluggable module.
#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/modules/Fields.h"
#include "simulator/chips/modules/ModuleChip.h"

#include <stdexcept>

namespace Simulator {

std::vector<EntryKey> moduleKeys( std::vector<std::string> media, unsigned revisionBytes );
ModuleIdentity identityIn( const ChipEntry & );
uint64_t moduleSeed( const ChipEntry & );
// Metres of a cable.
unsigned lengthIn( const ChipEntry & );
// Its surroundings.
void setUp( ModuleChip &, const ChipEntry & );

inline const std::vector<std::string> settableOfModules{
   "ambient", "supply", ".+[.]lane[1-8] (age|attenuation|rxPower)"
};

// The names of a table's media.
template <typename Products>
std::vector<std::string> mediaOf( const Products &products ) {
   std::vector<std::string> names;
   for ( const auto &product : products )
      names.emplace_back( product.media );
   return names;
}
// The schema lets only those of the table pass.
template <typename Products>
const auto &productOf( const Products &products, std::string_view media ) {
   for ( const auto &product : products )
      if ( product.media == media )
         return product;
   throw std::out_of_range( std::string( media ) );
}

} // namespace Simulator
