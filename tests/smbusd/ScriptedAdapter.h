// An adapter with a list of expected calls and their answers.
#pragma once

#include "smbusd/busses/linux/Adapter.h"

#include <deque>
#include <string>
#include <utility>

namespace SmbusdTest {

// Calls are written as "slave 0x48", "smbus read WORD_DATA 0x00", "write 0x48: 00 | read 0x48: 2
// bytes". The test fails after an unexpected call, and when an expected call does not come.
class ScriptedAdapter final : public Smbusd::Linux::Adapter {
 public:
   explicit ScriptedAdapter( unsigned long functions ) : functions_( functions ) {}
   ~ScriptedAdapter() override;

   // The answer is these bytes, or this errno value.
   void expect( const std::string &call, const std::string &bytes = {}, int error = 0 ) {
      expected_.push_back( { call, bytes, error } );
   }
   void expect( const std::string &call, int error ) { expect( call, {}, error ); }
   void driverIs( const std::string &name ) { driver_ = name; }

   int functions( unsigned long &bits ) override;
   int address( uint8_t address, bool force ) override;
   int pec( bool on ) override;
   int timeout( std::chrono::milliseconds ) override;
   int smbus( char readWrite, uint8_t command, int size, i2c_smbus_data *data ) override;
   int messages( std::span<i2c_msg> ) override;
   std::string driverAt( uint8_t ) override { return driver_; }
   void pause( std::chrono::milliseconds ) override;

 private:
   struct Expected {
      std::string call, bytes;
      int error = 0;
   };
   Expected take( const std::string &call );

   const unsigned long functions_;
   std::deque<Expected> expected_;
   std::string driver_;
};

} // namespace SmbusdTest
