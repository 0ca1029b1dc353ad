#include "simulator/chips/XcvrCpld.h"

#include <stdexcept>

namespace Simulator {

namespace {

constexpr uint16_t leds = 0x303;
constexpr uint8_t allDark = 0x0F; // bits 1-0 system, 2 and 3 power supplies

} // namespace

const XcvrCpld::Groups XcvrCpld::qsfpCpld{
   { true, 8, { 0x250, 0x252, 0x254, 0x256 } },
   { true, 8, { 0x251, 0x253, 0x255, 0x257 } },
   { true, 8, { 0x2D0, 0x2D2, 0x2D4, 0x2D6 } },
   { true, 8, { 0x2D1, 0x2D3, 0x2D5, 0x2D7 } },
};

const XcvrCpld::Groups XcvrCpld::sfpCpld{
   { false, 8, { 0x240, 0x250, 0x256, 0x259 } }, { false, 8, { 0x241, 0x251, 0x257, 0x25A } },
   { false, 2, { 0x242, 0x252, 0x258, 0x25B } }, { false, 8, { 0x2C0, 0x2D0, 0x2D6, 0x2D9 } },
   { false, 8, { 0x2C1, 0x2D1, 0x2D7, 0x2DA } }, { false, 2, { 0x2C2, 0x2D2, 0x2D8, 0x2DB } },
   { false, 8, { 0x3C0, 0x3D0, 0x3D4, 0x3D6 } }, { false, 4, { 0x3C1, 0x3D1, 0x3D5, 0x3D7 } },
   { true, 6, { 0x360, 0x361, 0x362, 0x363 } },
};

XcvrCpld::XcvrCpld( std::string name, const Groups &groups, unsigned firstQsfp,
                    const Registers &powerOn )
   : Cpld( std::move( name ), powerOnOf( groups, powerOn ) ) {
   unsigned qsfp = firstQsfp;
   unsigned sfp = 1;
   for ( const Group &group : groups ) {
      for ( unsigned bit = 0; bit < group.cages; ++bit )
         addCage( group.qsfp ? "qsfp" + std::to_string( qsfp++ ) : "sfp" + std::to_string( sfp++ ),
                  group, bit );
   }
   for ( const Line &line : std::vector( lines_ ) ) {
      if ( line.signal == Presence )
         presenceIs( line.cage, false );
   }
}

// No module is in reset or in low-power mode, and no transmitter is off.
Cpld::Registers XcvrCpld::powerOnOf( const Groups &groups, Registers scratch ) {
   scratch.emplace( leds, allDark );
   for ( const Group &group : groups ) {
      if ( group.qsfp )
         scratch[group.registers[0]] = static_cast<uint8_t>( ( 1u << group.cages ) - 1 );
   }
   return scratch;
}

void XcvrCpld::addCage( const std::string &cage, const Group &group, unsigned bit ) {
   constexpr Signal ofQsfp[] = { Reset, LpMode, Presence, Interrupt };
   constexpr Signal ofSfp[] = { RxLos, TxDisable, TxFault, Presence };
   const uint8_t mask = static_cast<uint8_t>( 1u << bit );
   for ( size_t i = 0; i < group.registers.size(); ++i )
      lines_.push_back( { cage, group.qsfp ? ofQsfp[i] : ofSfp[i], group.registers[i], mask } );
}

void XcvrCpld::lineIs( const Line &line, bool level ) {
   uint8_t &levels = inputs_[line.address];
   levels = static_cast<uint8_t>( level ? levels | line.mask : levels & ~line.mask );
}

void XcvrCpld::presenceIs( const std::string &cage, bool present ) {
   for ( const Line &line : lines_ ) {
      if ( line.cage != cage )
         continue;
      if ( line.signal == Presence )
         lineIs( line, present );
      else if ( line.signal == Interrupt )
         lineIs( line, true );
      else if ( line.signal == RxLos || line.signal == TxFault )
         lineIs( line, !present );
   }
}

bool XcvrCpld::isActive( const Line &line ) const {
   const bool activeLow = line.signal == Reset || line.signal == Interrupt;
   return bool( at( line.address ) & line.mask ) != activeLow;
}

void XcvrCpld::connect( const std::string &cage, Pluggable &module ) {
   bool found = false;
   for ( const Line &line : lines_ ) {
      if ( line.cage != cage )
         continue;
      connections_.emplace( line.address, Connection{ &line, &module } );
      found = true;
   }
   if ( !found )
      throw std::out_of_range( cage );
   order( cage, module );
}

// What the registers say to the module in a cage.
void XcvrCpld::order( const std::string &cage, Pluggable &module ) const {
   Pluggable::Orders orders;
   for ( const Line &line : lines_ ) {
      if ( line.cage != cage || inputs_.contains( line.address ) )
         continue;
      bool &wanted = line.signal == Reset    ? orders.reset
                     : line.signal == LpMode ? orders.lowPower
                                             : orders.txDisable;
      wanted = isActive( line );
   }
   module.ordersAre( orders );
}

void XcvrCpld::reset() {
   Cpld::reset();
   for ( const auto &[address, connection] : connections_ )
      if ( connection.line->signal == Presence ) // once for each module
         order( connection.line->cage, *connection.module );
}

bool XcvrCpld::drives( const Pluggable::Signals &signals, Signal signal ) {
   return signal == Interrupt ? signals.interrupt
          : signal == RxLos   ? signals.rxLos
          : signal == TxFault ? signals.txFault
                              : false;
}

uint8_t XcvrCpld::at( uint16_t address ) const {
   const auto input = inputs_.find( address );
   if ( input == inputs_.end() )
      return stored( address );
   uint8_t levels = input->second;
   const auto [begin, end] = connections_.equal_range( address );
   for ( auto each = begin; each != end; ++each ) {
      const auto &[line, module] = each->second;
      if ( line->signal != Presence && drives( module->signals(), line->signal ) )
         levels = static_cast<uint8_t>( line->signal == Interrupt ? levels & ~line->mask
                                                                  : levels | line->mask );
   }
   return levels;
}

void XcvrCpld::store( uint16_t address, uint8_t byte ) {
   if ( inputs_.contains( address ) )
      return;
   Cpld::store( address, byte );
   const auto [begin, end] = connections_.equal_range( address );
   for ( auto each = begin; each != end; ++each )
      order( each->second.line->cage, *each->second.module );
}

std::vector<Quantity> XcvrCpld::quantities() {
   static constexpr const char *names[] = { "reset", "lpMode",    "presence", "interrupt",
                                            "rxLos", "txDisable", "txFault" };
   std::vector<Quantity> all;
   for ( const Line &line : lines_ ) {
      const bool activeLow = line.signal == Reset || line.signal == Interrupt;
      Quantity quantity{ line.cage + " " + names[line.signal], "",
                         [&line, this] { return isActive( line ); } };
      if ( line.signal == Presence )
         quantity.set = [&line, this]( double on ) { presenceIs( line.cage, on != 0 ); };
      else if ( inputs_.contains( line.address ) )
         quantity.set = [&line, activeLow, this]( double on ) {
            lineIs( line, ( on != 0 ) != activeLow );
         };
      all.push_back( std::move( quantity ) );
   }
   return all;
}

namespace {

constexpr const char *settableLines = "q?sfp[0-9]+ (presence|interrupt|rxLos|txFault)";

} // namespace

ChipKind qsfpCpldKind() {
   return { .name = "QsfpCpld",
            .description = "The CPLD of 32 QSFP cages, qsfp1 to qsfp32.",
            .settings = { registersKey() },
            .settable = { settableLines },
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               return std::make_unique<XcvrCpld>( entry.name(), XcvrCpld::qsfpCpld, 1,
                                                  registersIn( entry ) );
            } };
}

ChipKind sfpCpldKind() {
   return { .name = "SfpCpld",
            .description = "The CPLD of 48 SFP cages, from sfp1 on, and 6 QSFP cages.",
            .settings = { integer( "firstQsfp", "The number of its first QSFP cage; 1 without it.",
                                   1, 1000 )
                             .optional(),
                          registersKey() },
            .settable = { settableLines },
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               const auto firstQsfp = static_cast<unsigned>( entry.number( "firstQsfp", 1 ) );
               return std::make_unique<XcvrCpld>( entry.name(), XcvrCpld::sfpCpld, firstQsfp,
                                                  registersIn( entry ) );
            } };
}

} // namespace Simulator
