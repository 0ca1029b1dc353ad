#include "smbus/RootBusId.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace Bus {

namespace {

enum class PciPart { None, Optional, Always };

struct MasterForm {
   std::string_view name;
   bool hasAccelerator;
   PciPart pci;
};

// In the order of Master.
constexpr std::array<MasterForm, 5> forms{ {
   { "sim", false, PciPart::None },
   { "i2c", false, PciPart::None },
   { "scd", true, PciPart::Always },
   { "ioport", false, PciPart::None },
   { "celestica", true, PciPart::Optional },
} };

const MasterForm &formOf( Master master ) { return forms[static_cast<size_t>( master )]; }

// Removes and returns the text before the separator, or all of it if there is none.
std::string_view cutFirst( std::string_view &text, char separator ) {
   const size_t at = std::min( text.find( separator ), text.size() );
   const std::string_view first = text.substr( 0, at );
   text.remove_prefix( std::min( at + 1, text.size() ) );
   return first;
}

// Removes "(4)" from the end of "scd(4)" and returns the number: 0 without brackets, nothing if the
// brackets don't contain a number.
std::optional<uint32_t> cutPci( std::string_view &name ) {
   const size_t open = name.find( '(' );
   if ( open == name.npos )
      return 0;
   if ( name.back() != ')' )
      return {};
   const auto digits = name.substr( open + 1, name.size() - open - 2 );
   name = name.substr( 0, open );
   return parseNumber( digits, std::numeric_limits<uint32_t>::max() );
}

} // namespace

RootBusId rootBusId( Master master, uint32_t pci, uint32_t accelerator, uint32_t bus ) {
   if ( !formOf( master ).hasAccelerator )
      return { master, 0, 0, bus };
   return { master, pci, accelerator, bus };
}

std::string toString( const RootBusId &id ) {
   const MasterForm &form = formOf( id.master );
   std::string text( form.name );
   if ( form.pci == PciPart::Always || id.pci != 0 )
      text += fmt::format( "({})", id.pci );
   if ( form.hasAccelerator )
      text += fmt::format( ":{}", id.accelerator );
   return text + fmt::format( ":{}", id.bus );
}

std::optional<RootBusId> parseRootBusId( std::string_view text ) {
   std::string_view name = cutFirst( text, ':' );
   const bool bracketed = name.find( '(' ) != name.npos;
   const auto pci = cutPci( name );
   const auto form = std::find_if( forms.begin(), forms.end(),
                                   [&]( const MasterForm &each ) { return each.name == name; } );
   if ( !pci || form == forms.end() )
      return {};
   if ( bracketed ? form->pci == PciPart::None : form->pci == PciPart::Always )
      return {};
   std::optional<uint32_t> accelerator = 0;
   if ( form->hasAccelerator )
      accelerator = parseNumber( cutFirst( text, ':' ), maxId );
   const auto bus = parseNumber( text, maxId );
   if ( !accelerator || !bus )
      return {};
   return rootBusId( static_cast<Master>( form - forms.begin() ), *pci, *accelerator, *bus );
}

std::optional<uint32_t> parseNumber( std::string_view text, uint32_t max ) {
   int base = 10;
   if ( text.starts_with( "0x" ) || text.starts_with( "0X" ) ) {
      text.remove_prefix( 2 );
      base = 16;
   }
   uint32_t number = 0;
   const char *end = text.data() + text.size();
   const auto [rest, error] = std::from_chars( text.data(), end, number, base );
   if ( error != std::errc() || rest != end || number > max )
      return {};
   return number;
}

} // namespace Bus
