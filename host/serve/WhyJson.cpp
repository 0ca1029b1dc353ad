#include "host/serve/WhyJson.h"

#include "boardfiles/Json.h"
#include "host/JsonReader.h"
#include "host/JsonWriter.h"
#include "host/journal/EventJson.h"

#include <fmt/format.h>

namespace Host {
namespace {

using BoardFiles::ChipPlace;
using BoardFiles::Json;

// One JSON list of what `write` writes of each.
template <class List, class Write>
void list( JsonWriter &json, const char *name, const List &all, Write write ) {
   json.key( name ).beginList();
   for ( const auto &one : all )
      write( one );
   json.endList();
}

ChipPlace placeIn( const Json &json ) {
   return { json.textOf( "bus" ).value_or( "" ), json.textOf( "path" ).value_or( "" ),
            json.unsignedOf( "address" ).value_or( 0 ) };
}

void write( JsonWriter &json, const ChipReadings &chip ) {
   json.beginObject().place( chip.place );
   if ( !chip.through.empty() )
      json.member( "through", chip.through );
   if ( !chip.whyNone.empty() )
      json.member( "why_none", chip.whyNone );
   list( json, "registers", chip.registers, [&]( const RegisterReading &reading ) {
      json.beginObject().member( "register", int64_t{ reading.what.number } );
      json.member( "bytes", int64_t{ reading.what.bytes } ).member( "name", reading.what.name );
      if ( reading.value )
         json.member( "value", *reading.value );
      if ( !reading.error.empty() )
         json.member( "error", reading.error );
      json.endObject();
   } );
   json.endObject();
}

void write( JsonWriter &json, const PassedTransfer &transfer ) {
   json.beginObject().place( transfer.place );
   json.member( "age", transfer.age ).member( "operation", transfer.operation );
   if ( !transfer.data.empty() )
      json.member( "data", transfer.data );
   if ( !transfer.error.empty() )
      json.member( "error", transfer.error );
   json.endObject();
}

std::vector<std::string> textsIn( const Json &json, const char *key ) {
   std::vector<std::string> texts;
   for ( const Json &text : json.elementsOf( key ) )
      texts.emplace_back( text.toText().value_or( "" ) );
   return texts;
}

ChipNeighbour neighbourIn( const Json &json ) {
   ChipNeighbour chip{ .place = placeIn( json ), .objects = textsIn( json, "objects" ) };
   if ( const Json *answers = json.find( "answers" ) )
      chip.answers = answers->isTrue();
   return chip;
}

} // namespace

std::string toJson( const Why &why ) {
   JsonWriter json;
   json.beginObject().member( "board", why.board ).key( "object" );
   json.beginObject().members( why.object ).endObject();
   list( json, "chips", why.chips, [&]( const ChipPlace &place ) {
      json.beginObject().place( place );
      json.endObject();
   } );
   if ( !why.driver.empty() )
      json.member( "driver", why.driver );
   if ( why.did )
      json.member( "did", int64_t{ *why.did } );
   list( json, "on", why.on, [&]( const std::string &name ) { json.value( name ); } );
   list( json, "chain", why.chain, [&]( const WhyStep &step ) {
      json.beginObject().member( "object", step.object ).member( "level", nameOf( step.level ) );
      json.member( "words", step.words ).endObject();
   } );
   list( json, "causes", why.causes, [&]( const Health::Cause &cause ) { json.cause( cause ); } );
   list( json, "neighbours", why.neighbours, [&]( const ChipNeighbour &chip ) {
      json.beginObject().place( chip.place );
      list( json, "objects", chip.objects, [&]( const auto &name ) { json.value( name ); } );
      if ( chip.answers )
         json.member( "answers", *chip.answers );
      json.endObject();
   } );
   list( json, "transfers", why.transfers, [&]( const auto &one ) { write( json, one ); } );
   if ( !why.whyNoTransfers.empty() )
      json.member( "why_no_transfers", why.whyNoTransfers );
   if ( !why.leftAlone.empty() )
      list( json, "left_alone", why.leftAlone,
            [&]( const std::string &one ) { json.value( one ); } );
   list( json, "events", why.events, [&]( const auto &event ) { json.raw( toJson( event ) ); } );
   if ( !why.registers.empty() )
      list( json, "registers", why.registers, [&]( const auto &chip ) { write( json, chip ); } );
   return json.endObject().text();
}

std::optional<Why> readWhy( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "why", findings );
   const Json *object = json ? json->find( "object" ) : nullptr;
   if ( !object )
      return {};
   Why why{ .board = json->textOf( "board" ).value_or( "" ),
            .object = toObject( *object ),
            .driver = json->textOf( "driver" ).value_or( "" ),
            .did = json->unsignedOf( "did" ),
            .on = textsIn( *json, "on" ),
            .whyNoTransfers = json->textOf( "why_no_transfers" ).value_or( "" ),
            .leftAlone = textsIn( *json, "left_alone" ) };
   for ( const Json &chip : json->elementsOf( "chips" ) )
      why.chips.push_back( placeIn( chip ) );
   for ( const Json &step : json->elementsOf( "chain" ) )
      why.chain.push_back( { step.textOf( "object" ).value_or( "" ),
                             Health::levelOf( step.textOf( "level" ).value_or( "" ) )
                                .value_or( Health::Level::Indeterminate ),
                             step.textOf( "words" ).value_or( "" ) } );
   for ( const Json &cause : json->elementsOf( "causes" ) )
      why.causes.push_back( toCause( cause ) );
   for ( const Json &chip : json->elementsOf( "neighbours" ) )
      why.neighbours.push_back( neighbourIn( chip ) );
   for ( const Json &transfer : json->elementsOf( "transfers" ) )
      why.transfers.push_back( { placeIn( transfer ), transfer.numberOf( "age" ).value_or( 0 ),
                                 transfer.textOf( "operation" ).value_or( "" ),
                                 transfer.textOf( "data" ).value_or( "" ),
                                 transfer.textOf( "error" ).value_or( "" ) } );
   for ( const Json &event : json->elementsOf( "events" ) )
      if ( auto known = toEvent( event ) )
         why.events.push_back( std::move( *known ) );
   return why;
}

} // namespace Host
