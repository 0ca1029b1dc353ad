#include "simulator/chips/modules/ModuleKeys.h"

namespace Simulator {

std::vector<EntryKey> moduleKeys( std::vector<std::string> media, unsigned revisionBytes ) {
   return { choice( "media", "What it is made for.", std::move( media ) ),
            text( "vendor", "Who made it.", 16 ),
            text( "partNumber", "Its part number.", 16 ),
            text( "revision", "Of the part.", revisionBytes ),
            text( "serial", "Serial number.", 16 ),
            text( "date", "YYMMDD.", 8 ),
            number( "ambient", "Degrees Celsius of the air around it.", -40, 100 ),
            number( "received",
                    "Milliwatts of light that arrive at each lane without a fibre; as is usual for "
                    "its media without it.",
                    0, 6.5 )
               .optional(),
            integer( "length", "Metres of a cable; 2 without it.", 1, 50 ).optional() };
}

ModuleIdentity identityIn( const ChipEntry &entry ) {
   return { entry.text( "vendor" ), entry.text( "partNumber" ), entry.text( "revision" ),
            entry.text( "serial" ), entry.text( "date" ) };
}

// Neighbours drift apart: the device id is part of the seed.
uint64_t moduleSeed( const ChipEntry &entry ) { return entry.around.seed << 32 | entry.did(); }

unsigned lengthIn( const ChipEntry &entry ) {
   return static_cast<unsigned>( entry.number( "length", 2 ) );
}

void setUp( ModuleChip &module, const ChipEntry &entry ) {
   module.model().ambientIs( entry.number( "ambient" ) );
   if ( !entry.find( "received" ) )
      return;
   for ( unsigned lane = 0; lane < ModuleModel::mostLanes; ++lane )
      module.model().arrivingIs( lane, entry.number( "received" ) );
}

} // namespace Simulator
