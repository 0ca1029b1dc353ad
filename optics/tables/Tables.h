// The codes of SFF-8024, which the three standards share.
#pragma once

#include "optics/Module.h"

namespace Optics {

Code identifierCode( uint8_t number );
Code connectorCode( uint8_t number );
// The codes 4 to 6 differ.
Code encodingOfSff8472( uint8_t number );
Code encodingOfSff8636( uint8_t number );
Code extendedComplianceCode( uint8_t number );
// Four bits in SFF-8636, a byte in CMIS, with the same meaning.
Code technologyCode( uint8_t number );
bool isCopper( const Code &technology );
bool isPassiveCopper( const Code &technology );

// CMIS. The media type tells which table the media interface's number is from.
Code mediaTypeCode( uint8_t number );
Code hostInterfaceCode( uint8_t number );
Code mediaInterfaceCode( uint8_t mediaType, uint8_t number );

} // namespace Optics
