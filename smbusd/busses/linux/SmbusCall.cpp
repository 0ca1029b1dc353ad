#include "smbusd/busses/linux/SmbusCall.h"

#include <algorithm>

namespace Smbusd::Linux {

namespace {

using Kind = Bus::Transfer::Kind;

SmbusCall read( int size, unsigned long needs ) { return { size, I2C_SMBUS_READ, needs }; }
SmbusCall write( int size, unsigned long needs ) { return { size, I2C_SMBUS_WRITE, needs }; }

std::optional<SmbusCall> callWithoutPec( const Bus::Transfer &transfer ) {
   const bool fits = transfer.length <= I2C_SMBUS_BLOCK_MAX;
   switch ( transfer.kind ) {
   case Kind::Read:
      if ( transfer.isReceiveByte() )
         return read( I2C_SMBUS_BYTE, I2C_FUNC_SMBUS_READ_BYTE );
      if ( transfer.length == 1 )
         return read( I2C_SMBUS_BYTE_DATA, I2C_FUNC_SMBUS_READ_BYTE_DATA );
      if ( transfer.length == 2 )
         return read( I2C_SMBUS_WORD_DATA, I2C_FUNC_SMBUS_READ_WORD_DATA );
      if ( fits && !transfer.pec )
         return read( I2C_SMBUS_I2C_BLOCK_DATA, I2C_FUNC_SMBUS_READ_I2C_BLOCK );
      return {};
   case Kind::Write:
      if ( transfer.isSendByte() )
         return write( I2C_SMBUS_BYTE, I2C_FUNC_SMBUS_WRITE_BYTE );
      if ( transfer.length == 1 )
         return write( I2C_SMBUS_BYTE_DATA, I2C_FUNC_SMBUS_WRITE_BYTE_DATA );
      if ( transfer.length == 2 )
         return write( I2C_SMBUS_WORD_DATA, I2C_FUNC_SMBUS_WRITE_WORD_DATA );
      if ( fits && !transfer.pec )
         return write( I2C_SMBUS_I2C_BLOCK_DATA, I2C_FUNC_SMBUS_WRITE_I2C_BLOCK );
      return {};
   case Kind::ProcessCall:
      return write( I2C_SMBUS_PROC_CALL, I2C_FUNC_SMBUS_PROC_CALL );
   case Kind::BlockRead:
      return read( I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_READ_BLOCK_DATA );
   case Kind::BlockWrite:
      if ( fits )
         return write( I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_WRITE_BLOCK_DATA );
      return {};
   }
   return {};
}

uint8_t byteAt( const std::string &data, size_t i ) { return static_cast<uint8_t>( data[i] ); }

std::string wordOf( const i2c_smbus_data &data ) {
   return { static_cast<char>( data.word ), static_cast<char>( data.word >> 8 ) };
}

} // namespace

std::optional<SmbusCall> smbusCall( const Bus::Transfer &transfer ) {
   std::optional<SmbusCall> call = callWithoutPec( transfer );
   if ( call && transfer.pec )
      call->needs |= I2C_FUNC_SMBUS_PEC;
   return call;
}

i2c_smbus_data dataFor( const SmbusCall &call, const Bus::Transfer &transfer ) {
   i2c_smbus_data data{};
   const std::string &bytes = transfer.data;
   switch ( call.size ) {
   case I2C_SMBUS_BYTE_DATA:
      data.byte = bytes.empty() ? 0 : byteAt( bytes, 0 );
      break;
   case I2C_SMBUS_WORD_DATA:
   case I2C_SMBUS_PROC_CALL: // low byte first
      if ( !bytes.empty() )
         data.word = static_cast<uint16_t>( byteAt( bytes, 0 ) | byteAt( bytes, 1 ) << 8 );
      break;
   case I2C_SMBUS_BLOCK_DATA:
   case I2C_SMBUS_I2C_BLOCK_DATA:
      data.block[0] = static_cast<uint8_t>( transfer.length );
      std::copy( bytes.begin(), bytes.end(), data.block + 1 );
      break;
   }
   return data;
}

std::string dataFrom( const SmbusCall &call, const Bus::Transfer &transfer,
                      const i2c_smbus_data &data ) {
   const auto block = [&]( size_t count ) {
      return std::string( reinterpret_cast<const char *>( data.block ) + 1,
                          std::min<size_t>( count, I2C_SMBUS_BLOCK_MAX ) );
   };
   if ( call.size == I2C_SMBUS_PROC_CALL )
      return wordOf( data );
   if ( call.readWrite == I2C_SMBUS_WRITE )
      return {};
   switch ( call.size ) {
   case I2C_SMBUS_BYTE:
   case I2C_SMBUS_BYTE_DATA:
      return { static_cast<char>( data.byte ) };
   case I2C_SMBUS_WORD_DATA:
      return wordOf( data );
   case I2C_SMBUS_BLOCK_DATA:
      return block( data.block[0] );
   default: // the adapter may have read fewer bytes than requested
      return block( std::min<size_t>( data.block[0], transfer.length ) );
   }
}

} // namespace Smbusd::Linux
