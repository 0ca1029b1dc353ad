#include "smbusd/busses/linux/LinuxBus.h"

#include "smbusd/busses/linux/Messages.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

namespace Smbusd::Linux {

namespace {

// A retry can't help.
struct Refusal : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// The kernel's default.
constexpr std::chrono::milliseconds usualTimeout{ 1000 };

Bus::Outcome failed( int error ) { return { {}, explain( error ), error == EOPNOTSUPP }; }

// Receive byte sends no register, so its width doesn't matter.
unsigned offsetBytesOf( const Bus::Transfer &transfer, const BoardFiles::ChipRules &rules ) {
   const unsigned bytes = rules.offsetBytes ? rules.offsetBytes : transfer.offsetBytes;
   if ( !transfer.isReceiveByte() && transfer.offset >> 8 * bytes != 0 )
      throw Refusal( fmt::format( "register {:#x} does not fit into {} byte{} for address {:#04x}; "
                                  "set \"offsetBytes\" in the routes file",
                                  transfer.offset, bytes, bytes == 1 ? "" : "s",
                                  transfer.address ) );
   return bytes;
}

} // namespace

void LinuxBus::open() {
   std::unique_ptr<Adapter> adapter = openAdapter_();
   if ( const int error = adapter->functions( functions_ ) )
      throw AdapterError(
         fmt::format( "can't ask the adapter for its functions: {}", std::strerror( error ) ) );
   pec_ = false;
   timeout_ = {};
   adapter_ = std::move( adapter );
}

Bus::Outcome LinuxBus::transfer( const Bus::Transfer &transfer ) {
   try {
      if ( !adapter_ )
         open();
      Bus::Outcome outcome = execute( transfer );
      adapter_->pause( transfer.pause );
      return outcome;
   } catch ( const Refusal &refusal ) {
      return { {}, refusal.what(), true, 0 };
   } catch ( const AdapterError &error ) {
      return { {}, error.what(), true, 0 };
   }
}

Bus::Outcome LinuxBus::execute( const Bus::Transfer &transfer ) {
   const auto found = chips_.find( transfer.address );
   const BoardFiles::ChipRules rules =
      found == chips_.end() ? BoardFiles::ChipRules{} : found->second;
   const unsigned offsetBytes = offsetBytesOf( transfer, rules );

   std::optional<SmbusCall> call;
   if ( offsetBytes == 1 || transfer.isReceiveByte() )
      call = smbusCall( transfer );
   const unsigned long missing = call ? call->needs & ~functions_ : 0;
   const bool byMessages = Messages::canBe( transfer ) && functions_ & I2C_FUNC_I2C;
   if ( ( !call || missing ) && !byMessages ) {
      const unsigned long instead = Messages::canBe( transfer ) ? I2C_FUNC_I2C : 0;
      if ( !missing && !instead )
         throw Refusal( "the kernel has no block read for registers of two bytes" );
      throw Refusal( fmt::format( "the adapter lacks {}{}{}", functionNames( missing ),
                                  missing && instead ? " and also " : "",
                                  functionNames( instead ) ) );
   }
   address( transfer, rules );
   timeoutIs( transfer.timeout );
   return call && !missing ? smbus( *call, transfer ) : messages( transfer, offsetBytes );
}

void LinuxBus::address( const Bus::Transfer &transfer, const BoardFiles::ChipRules &rules ) {
   // Every time, because a kernel driver may have bound to it since.
   const int error = adapter_->address( transfer.address, rules.force );
   if ( error == EBUSY ) {
      const std::string driver = adapter_->driverAt( transfer.address );
      throw Refusal( fmt::format( "the address is held by {} kernel driver{}",
                                  driver.empty() ? "a" : "the",
                                  driver.empty() ? "" : " " + driver ) );
   }
   if ( error )
      throw Refusal( fmt::format( "the adapter refuses the address: {}", std::strerror( error ) ) );
}

void LinuxBus::timeoutIs( std::chrono::milliseconds timeout ) {
   if ( timeout.count() == 0 && timeout_.count() != 0 )
      timeout = usualTimeout;
   if ( timeout.count() == 0 || timeout == timeout_ )
      return;
   if ( const int error = adapter_->timeout( timeout ) )
      throw Refusal( fmt::format( "the adapter refuses a timeout of {} ms: {}", timeout.count(),
                                  std::strerror( error ) ) );
   timeout_ = timeout;
}

Bus::Outcome LinuxBus::smbus( const SmbusCall &call, const Bus::Transfer &transfer ) {
   if ( transfer.pec != pec_ ) {
      if ( const int error = adapter_->pec( transfer.pec ) )
         throw Refusal(
            fmt::format( "the adapter refuses to switch PEC: {}", std::strerror( error ) ) );
      pec_ = transfer.pec;
   }
   i2c_smbus_data data = dataFor( call, transfer );
   const auto command =
      static_cast<uint8_t>( transfer.isReceiveByte() ? 0 : transfer.offset ); // the byte to send
   const bool bare = transfer.isSendByte();
   if ( const int error =
           adapter_->smbus( call.readWrite, command, call.size, bare ? nullptr : &data ) )
      return failed( error );
   return { dataFrom( call, transfer, data ), {} };
}

Bus::Outcome LinuxBus::messages( const Bus::Transfer &transfer, unsigned offsetBytes ) {
   Messages messages( transfer, offsetBytes );
   if ( messages.tooLong() )
      throw Refusal( fmt::format( "more than {} bytes in one message; the kernel refuses them",
                                  maxMessageBytes ) );
   if ( const int error = adapter_->messages( messages.list() ) )
      return failed( error );
   Bus::Outcome outcome;
   outcome.data = messages.data( outcome.error );
   return outcome;
}

} // namespace Smbusd::Linux
