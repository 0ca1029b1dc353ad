#pragma once

#include "host/session/Supervisor.h"

#include <deque>
#include <gtest/gtest.h>

namespace Host {

// A board with two sensors and an LED. The test plays the child.
class PlayedChild : public ::testing::Test {
 protected:
   static BoardFiles::Board makeBoard() {
      return { .folder = "b",
               .topology = "[]",
               .objects = { { .kind = BoardFiles::Kind::TempSensor, .name = "a", .did = 1 },
                            { .kind = BoardFiles::Kind::TempSensor, .name = "b", .did = 2 },
                            { .kind = BoardFiles::Kind::Led, .name = "led", .did = 3 } },
               .traces = { .faults = { "execute: failure in response ", "execute: " } } };
   }

   // What the child does next, in short: "load", "init led", "add 0", "read 0", "act 0", or "-" for
   // nothing. It reads the objects of a command one after the other.
   std::string next() {
      if ( !toRead_.empty() )
         return readNext();
      const auto command = supervisor->next( now );
      if ( !command )
         return "-";
      if ( const auto *init = std::get_if<InitCommand>( &*command ) )
         return "init " + std::string( nameOf( init->kind ) );
      if ( const auto *add = std::get_if<AddCommand>( &*command ) )
         return "add " + std::to_string( add->object );
      if ( const auto *act = std::get_if<ActCommand>( &*command ) )
         return "act " + std::to_string( act->object );
      if ( const auto *read = std::get_if<ReadCommand>( &*command ) ) {
         toRead_.assign( read->objects.begin(), read->objects.end() );
         return readNext();
      }
      return "load";
   }
   void begin( const char *operation = "op" ) {
      supervisor->operationIs( SharedPage::Operation{ operation, now }, now );
   }
   void hear( const Event &event ) { supervisor->heard( event, now ); }
   void good() { hear( Done{} ); }

   // Lets all commands succeed until none is left, and returns them.
   std::vector<std::string> runAll( double celsius = 20 ) {
      std::vector<std::string> commands;
      for ( std::string command; ( command = next() ) != "-"; good() ) {
         begin();
         if ( command.starts_with( "read" ) && command != "read 2" )
            hear( Reading{ .name = "temperature", .value = celsius } );
         commands.push_back( command );
      }
      return commands;
   }
   // Plays a child until `command` runs.
   void runTo( const std::string &command ) {
      for ( std::string current; ( current = next() ) != command; good() ) {
         ASSERT_NE( current, "-" ) << command << " never came";
         begin();
      }
      begin( command.c_str() );
   }
   void die( const std::string &cause = "Assertion `x' failed." ) {
      toRead_.clear();
      supervisor->childDied( cause, now );
      supervisor->childStarted();
   }
   ObjectReport object( size_t index ) const { return supervisor->report( now )[index]; }
   Reading reading( size_t index ) const { return object( index ).values.at( 0 ).reading; }

   void restart( const Limits &limits ) { supervisor.emplace( board, limits, now ); }

   const BoardFiles::Board board = makeBoard();
   Time now = Time( std::chrono::hours( 1 ) );
   std::optional<Supervisor> supervisor{ std::in_place, board, Limits{}, now };

 private:
   std::string readNext() {
      const size_t object = toRead_.front();
      toRead_.pop_front();
      return "read " + std::to_string( object );
   }

   std::deque<size_t> toRead_{};
};

using Commands = std::vector<std::string>;

} // namespace Host
