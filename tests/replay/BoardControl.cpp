#include "BoardControl.h"

#include "orbis-smbus/ServerConnection.h"

#include <fmt/format.h>

using SmbusControl::Request;

BoardControl::BoardControl( const std::string &socket ) : server_( socket ) {
   Request list;
   list.set_list( true );
   const SmbusControl::Response response = server_.ask( list );
   for ( const auto &chip : response.state().chip() ) {
      if ( chip.kind() == "PCA9548" || chip.kind() == "PCA9506" )
         continue;
      chips_.push_back( chip.name() );
      for ( const auto &quantity : chip.quantity() )
         if ( quantity.settable() )
            quantities_.push_back( { chip.name(), quantity.name(), quantity.value() } );
   }
   for ( const auto &module : response.state().module() )
      modules_.push_back( module.name() );
}

void BoardControl::step( unsigned milliseconds ) {
   Request step;
   step.set_step( milliseconds / 1000. );
   server_.ask( step );
}

void BoardControl::clearFaults( const std::string &chip ) {
   Request clear;
   clear.set_clear_faults( chip );
   server_.ask( clear );
}

Request BoardControl::randomRequest( Random &random ) const {
   Request request;
   switch ( random.below( 6 ) ) {
   case 0:
      request.set_pull( random.oneOf( modules_ ) );
      break;
   case 1:
      request.set_insert( random.oneOf( modules_ ) );
      break;
   case 2:
      request.mutable_fault()->set_chip( random.oneOf( chips_ ) );
      request.mutable_fault()->set_nacks( 1 );
      request.mutable_fault()->set_out_of( 1 + random.below( 5 ) );
      break;
   case 3:
      request.set_clear_faults( random.oneOf( chips_ ) );
      break;
   default: {
      const Quantity &quantity = random.oneOf( quantities_ );
      request.mutable_set()->mutable_name()->set_part( quantity.chip );
      request.mutable_set()->mutable_name()->set_name( quantity.name );
      // A switch is set to 0 or 1; another quantity to up to twice its value.
      request.mutable_set()->set_value(
         quantity.value == 0 || quantity.value == 1
            ? random.below( 2 )
            : quantity.value * ( static_cast<double>( random.below( 41 ) ) / 20 ) );
   }
   }
   return request;
}

std::string BoardControl::carryOut( const Request &request ) {
   try {
      server_.ask( request );
      return "done";
   } catch ( const SmbusClient::Failed &failure ) {
      return failure.what();
   }
}

std::string BoardControl::doSomething( Random &random ) {
   const Request request = randomRequest( random );
   std::string words;
   if ( request.has_pull() )
      words = "pull " + request.pull();
   else if ( request.has_insert() )
      words = "insert " + request.insert();
   else if ( request.has_clear_faults() )
      words = "clear " + request.clear_faults();
   else if ( request.has_fault() )
      words = fmt::format( "nack {} 1/{}", request.fault().chip(), request.fault().out_of() );
   else
      words = fmt::format( "set {} {} {}", request.set().name().part(), request.set().name().name(),
                           request.set().value() );
   return fmt::format( "{} -> {}", words, carryOut( request ) );
}
