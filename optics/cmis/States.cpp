#include "optics/Names.h"
#include "optics/cmis/Cmis.h"

namespace Optics::Cmis {

namespace {

// CMIS, lower byte 3.
constexpr uint8_t lowPower = 1;
constexpr uint8_t ready = 3;
constexpr uint8_t fault = 5;
constexpr NamedNumber moduleStates[] = {
   { lowPower, "low power" }, { 2, "powering up" }, { ready, "ready" },
   { 4, "powering down" },    { fault, "fault" },
};

// CMIS, lower byte 41.
constexpr NamedNumber faultCauses[] = {
   { 0, "not told" },    { 1, "TEC runaway" }, { 2, "data memory" }, { 3, "program memory" },
   { 4, "transmitter" }, { 5, "receiver" },    { 6, "temperature" },
};

// CMIS, page 11h bytes 128 to 131.
constexpr NamedNumber dataPathStates[] = {
   { 1, "deactivated" },   { 2, "initializing" },   { 3, "deinitializing" }, { 4, "activated" },
   { 5, "turning tx on" }, { 6, "turning tx off" }, { 7, "initialized" },
};

// CMIS, page 11h bytes 202 to 205.
constexpr NamedNumber configurations[] = {
   { 0x0, "undefined" },
   { 0x1, "done" },
   { 0x2, "rejected" },
   { 0x3, "rejected: no such application" },
   { 0x4, "rejected: invalid data path" },
   { 0x5, "rejected: invalid signal settings" },
   { 0x6, "rejected: lanes in use" },
   { 0x7, "rejected: part of a data path" },
   { 0x8, "rejected: no emulation" },
   { 0xC, "in progress" },
};

// CMIS, lower byte 8.
constexpr NamedBit moduleFlags[] = {
   { 8, 0, "module state changed" },
   { 8, 1, "error in the module's firmware" },
   { 8, 2, "error in the data path's firmware" },
   { 8, 3, "abnormal firmware" },
   { 8, 6, "command 1 complete" },
   { 8, 7, "command 2 complete" },
};

// Four bits a lane, the odd lane in the lower half: the other way round than in SFF-8636.
std::optional<Code> nibbleOf( const Half &status, unsigned firstByte, unsigned lane,
                              std::span<const NamedNumber> names ) {
   const unsigned low = lane % 2 ? 0 : 4;
   const auto found = status.bits( firstByte + ( lane - 1 ) / 2, low + 3, low );
   return found ? std::optional( codeOf( *found, names ) ) : std::nullopt;
}

// What the host's side of a lane tells. Page 01h bytes 155 to 158 tell which is there.
void decodeHostSide( const Image &image, Lane &lane ) {
   const Half advertised( image, page01 );
   const Half status( image, page11 );
   const unsigned bit = lane.number - 1;
   lane.dataPathState = nibbleOf( status, 128, lane.number, dataPathStates );
   lane.configuration = nibbleOf( status, 202, lane.number, configurations );
   if ( const auto application = status.bits( 206 + bit, 7, 4 ) )
      lane.application = *application;
   lane.rxOutputValid = status.bit( 132, bit );
   if ( advertised.bit( 157, 1 ) == true )
      lane.txLos = status.bit( 136, bit );
   if ( advertised.bit( 157, 2 ) == true )
      lane.txLossOfLock = status.bit( 137, bit );
   if ( advertised.bit( 157, 3 ) == true )
      lane.txEqualizerFault = status.bit( 138, bit );
   if ( advertised.bit( 156, 1 ) == true )
      lane.rxDisabled = Half( image, page10 ).bit( 138, bit );
}

// What the fibre's side tells.
void decodeMediaSide( const Image &image, Lane &lane ) {
   const Half advertised( image, page01 );
   const Half status( image, page11 );
   const unsigned bit = lane.number - 1;
   lane.txOutputValid = status.bit( 133, bit );
   if ( advertised.bit( 157, 0 ) == true )
      lane.txFault = status.bit( 135, bit );
   if ( advertised.bit( 158, 1 ) == true )
      lane.rxLos = status.bit( 147, bit );
   if ( advertised.bit( 158, 2 ) == true )
      lane.rxLossOfLock = status.bit( 148, bit );
   if ( advertised.bit( 155, 1 ) == true )
      lane.txDisabled = Half( image, page10 ).bit( 130, bit );
}

} // namespace

void decodeStates( const Image &image, Module &module ) {
   const Half base( image, lower );
   if ( const auto state = base.bits( 3, 3, 1 ) ) {
      module.state = codeOf( *state, moduleStates );
      if ( *state == lowPower || *state == ready )
         module.isLowPower = *state == lowPower;
      const auto cause = base.byte( 41 );
      if ( *state == fault && cause )
         module.faultCause = codeOf( *cause, faultCauses );
   }
   if ( const auto deasserted = base.bit( 3, 0 ) )
      module.interrupts = !*deasserted;
   if ( isFlat( image ) != false )
      return;
   addNamesOfSetBits( module.flags, base, moduleFlags );
   const auto media = mediaLanes( image );
   if ( !media )
      return;
   const uint8_t host = hostLanes( image );
   for ( unsigned number = 1; number <= laneCount; ++number ) {
      const unsigned bit = 1u << ( number - 1 );
      if ( !( ( *media | host ) & bit ) )
         continue;
      Lane lane;
      lane.number = number;
      decodeHostSide( image, lane );
      if ( *media & bit )
         decodeMediaSide( image, lane );
      module.lanes.push_back( lane );
   }
}

} // namespace Optics::Cmis
