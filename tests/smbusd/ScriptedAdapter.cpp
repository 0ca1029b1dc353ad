#include "ScriptedAdapter.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <map>

namespace SmbusdTest {

namespace {

std::string hex( const uint8_t *bytes, size_t count ) {
   std::string text;
   for ( size_t i = 0; i < count; ++i )
      text += fmt::format( " {:02x}", bytes[i] );
   return text;
}

const char *nameOf( int size ) {
   static const std::map<int, const char *> names{ { I2C_SMBUS_BYTE, "BYTE" },
                                                   { I2C_SMBUS_BYTE_DATA, "BYTE_DATA" },
                                                   { I2C_SMBUS_WORD_DATA, "WORD_DATA" },
                                                   { I2C_SMBUS_PROC_CALL, "PROC_CALL" },
                                                   { I2C_SMBUS_BLOCK_DATA, "BLOCK_DATA" },
                                                   { I2C_SMBUS_I2C_BLOCK_DATA, "I2C_BLOCK" } };
   return names.at( size );
}

// As the kernel returns it: words in the byte order of this machine.
std::string carried( int size, const i2c_smbus_data &data ) {
   if ( size == I2C_SMBUS_BYTE_DATA )
      return fmt::format( ": {:#04x}", data.byte );
   if ( size == I2C_SMBUS_WORD_DATA || size == I2C_SMBUS_PROC_CALL )
      return fmt::format( ": {:#06x}", data.word );
   return ":" + hex( data.block, data.block[0] + 1u );
}

} // namespace

ScriptedAdapter::~ScriptedAdapter() {
   for ( const Expected &missing : expected_ )
      ADD_FAILURE() << "never came: " << missing.call;
}

ScriptedAdapter::Expected ScriptedAdapter::take( const std::string &call ) {
   if ( expected_.empty() ) {
      ADD_FAILURE() << "unexpected: " << call;
      return { call, {}, EIO };
   }
   const Expected expected = expected_.front();
   expected_.pop_front();
   EXPECT_EQ( call, expected.call );
   return expected;
}

int ScriptedAdapter::functions( unsigned long &bits ) {
   bits = functions_;
   return 0;
}

int ScriptedAdapter::address( uint8_t address, bool force ) {
   return take( fmt::format( "slave{} {:#04x}", force ? " force" : "", address ) ).error;
}

int ScriptedAdapter::pec( bool on ) {
   return take( fmt::format( "pec {}", on ? "on" : "off" ) ).error;
}

int ScriptedAdapter::timeout( std::chrono::milliseconds time ) {
   return take( fmt::format( "timeout {} ms", time.count() ) ).error;
}

void ScriptedAdapter::pause( std::chrono::milliseconds time ) {
   if ( time.count() > 0 )
      take( fmt::format( "pause {} ms", time.count() ) );
}

int ScriptedAdapter::smbus( char readWrite, uint8_t command, int size, i2c_smbus_data *data ) {
   const bool writes = readWrite == I2C_SMBUS_WRITE;
   const Expected expected =
      take( fmt::format( "smbus {} {} {:#04x}{}", writes ? "write" : "read", nameOf( size ),
                         command, writes && data ? carried( size, *data ) : "" ) );
   const std::string &bytes = expected.bytes;
   if ( bytes.empty() )
      return expected.error;
   if ( size == I2C_SMBUS_BYTE || size == I2C_SMBUS_BYTE_DATA ) {
      data->byte = static_cast<uint8_t>( bytes[0] );
   } else if ( size == I2C_SMBUS_WORD_DATA || size == I2C_SMBUS_PROC_CALL ) {
      data->word = static_cast<uint16_t>( static_cast<uint8_t>( bytes[0] ) |
                                          static_cast<uint8_t>( bytes[1] ) << 8 );
   } else {
      data->block[0] = static_cast<uint8_t>( bytes.size() );
      std::copy( bytes.begin(), bytes.end(), data->block + 1 );
   }
   return expected.error;
}

int ScriptedAdapter::messages( std::span<i2c_msg> messages ) {
   std::string call;
   for ( const i2c_msg &message : messages ) {
      if ( !call.empty() )
         call += " | ";
      call += message.flags & I2C_M_RD
                 ? fmt::format( "read {:#04x}: {} bytes", message.addr, message.len )
                 : fmt::format( "write {:#04x}:{}", message.addr, hex( message.buf, message.len ) );
   }
   const Expected expected = take( call );
   std::copy( expected.bytes.begin(), expected.bytes.end(), messages.back().buf );
   return expected.error;
}

} // namespace SmbusdTest
