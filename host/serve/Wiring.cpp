#include "host/serve/Wiring.h"

#include "host/JsonWriter.h"
#include "host/plugin/Action.h"

#include <algorithm>
#include <set>

namespace Host {

using BoardFiles::Board;
using BoardFiles::ObjectDescription;

std::vector<size_t> onOf( const Board &board, size_t object ) {
   std::vector<size_t> on;
   for ( auto in = board.objects[object].health.in; in; ) {
      const auto found =
         std::find_if( board.objects.begin(), board.objects.end(),
                       [&in]( const ObjectDescription &one ) { return one.name == *in; } );
      if ( found == board.objects.end() )
         break;
      on.push_back( static_cast<size_t>( found - board.objects.begin() ) );
      in = found->health.in;
   }
   return on;
}

std::string wiringJson( std::string_view name, const Board &board ) {
   JsonWriter json;
   json.beginObject().member( "board", name ).key( "objects" ).beginList();
   for ( size_t i = 0; i < board.objects.size(); ++i ) {
      const ObjectDescription &object = board.objects[i];
      json.beginObject().member( "name", object.name ).member( "type", nameOf( object.kind ) );
      if ( !object.driver.empty() )
         json.member( "driver", object.driver );
      if ( object.did )
         json.member( "did", int64_t{ *object.did } );
      json.key( "on" ).beginList();
      for ( const size_t one : onOf( board, i ) )
         json.value( board.objects[one].name );
      json.endList().key( "chips" ).beginList();
      for ( const BoardFiles::ChipPlace &chip : object.chips )
         json.beginObject().place( chip ).endObject();
      json.endList().endObject();
   }
   json.endList().key( "actions" ).beginObject();
   std::set<BoardFiles::Kind> kinds;
   for ( const ObjectDescription &object : board.objects )
      if ( kinds.insert( object.kind ).second ) {
         json.key( nameOf( object.kind ) ).beginList();
         for ( const std::string &usage : usageOf( object.kind ) )
            json.value( usage );
         json.endList();
      }
   return json.endObject().endObject().text();
}

} // namespace Host
