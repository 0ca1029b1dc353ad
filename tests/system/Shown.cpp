#include "Shown.h"

#include "StartedProgram.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

Shown showBoard( const std::string &board, const std::string &socket ) {
   setenv( "ORBIS_SMBUS_SOCKET", socket.c_str(), 1 );
   TestSupport::StartedProgram host( { ORBIS_HOST, "show", "--json", board } );
   Shown shown;
   shown.exitCode = host.wait();
   rapidjson::Document document;
   document.Parse( host.output().c_str() );
   if ( document.HasParseError() || !document.IsObject() ) {
      ADD_FAILURE() << "not a JSON object: " << host.output() << host.errors();
      return shown;
   }
   for ( const auto &object : document["objects"].GetArray() ) {
      if ( std::string( "module" ) == object["type"].GetString() )
         continue; // read by a running serve only
      const std::string name = object["name"].GetString();
      const std::string state = object["state"].GetString();
      if ( state != "ok" )
         shown.faults[name] =
            state + ": " + ( object.HasMember( "fault" ) ? object["fault"].GetString() : "" );
      for ( const auto &value : object["values"].GetArray() ) {
         const std::string known = value["state"].GetString();
         if ( known == "absent" )
            shown.absent.insert( name );
         if ( known != "ok" )
            shown.faults[name] =
               known + ": " + ( value.HasMember( "fault" ) ? value["fault"].GetString() : "" );
         else if ( value["value"].IsNumber() )
            shown.values[name + " " + value["name"].GetString()] = value["value"].GetDouble();
         else if ( value["value"].IsString() && value["name"] == "presence" )
            shown.texts[name] = value["value"].GetString();
      }
   }
   return shown;
}
