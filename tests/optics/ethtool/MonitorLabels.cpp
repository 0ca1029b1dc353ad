#include "MonitorLabels.h"

#include <map>
#include <regex>

namespace OpticsTest {

using namespace Optics;

namespace {

std::optional<Quantity> quantityOf( const std::string &name ) {
   static const std::map<std::string, Quantity> names{
      { "Module temperature", Quantity::Temperature },
      { "Module voltage", Quantity::SupplyVoltage },
      { "Laser bias current", Quantity::TxBias },
      { "Laser tx bias current", Quantity::TxBias },
      { "Laser output power", Quantity::TxPower },
      { "Laser tx power", Quantity::TxPower },
      { "Transmit avg optical power", Quantity::TxPower },
      { "Laser rx power", Quantity::RxPower },
      { "Receiver signal average optical power", Quantity::RxPower },
      { "Rcvr signal avg optical power", Quantity::RxPower },
      { "Receiver signal OMA", Quantity::RxPower },
   };
   const auto found = names.find( name );
   return found == names.end() ? std::nullopt : std::optional( found->second );
}

std::optional<MonitorLabel> parsed( const std::string &text ) {
   static const std::regex form(
      R"(^(.+?)(?: (high|low) (alarm|warning)( threshold)?)? *(?:\((?:Chan|Channel) (\d)\))?$)" );
   std::smatch parts;
   if ( !std::regex_match( text, parts, form ) )
      return {};
   const auto quantity = quantityOf( parts[1] );
   if ( !quantity )
      return {};
   MonitorLabel label;
   label.quantity = *quantity;
   const bool isOfModule = quantity == Quantity::Temperature || quantity == Quantity::SupplyVoltage;
   label.lane = parts[5].matched ? static_cast<unsigned>( std::stoul( parts[5] ) )
                : isOfModule     ? 0
                                 : 1;
   label.isThreshold = parts[4].matched;
   label.isFlag = parts[2].matched && !label.isThreshold;
   label.which = parts[2].str() + " " + parts[3].str();
   if ( parts[1] == "Receiver signal OMA" )
      label.isAverage = false;
   else if ( parts[1].str().starts_with( "R" ) )
      label.isAverage = true;
   return label;
}

} // namespace

const std::optional<MonitorLabel> &monitorLabelOf( const std::string &text ) {
   static std::map<std::string, std::optional<MonitorLabel>> known;
   const auto found = known.find( text );
   return found != known.end() ? found->second : known[text] = parsed( text );
}

} // namespace OpticsTest
