#include "smbusd/busses/linux/LinuxBus.h"

#include "smbusd/busses/linux/Messages.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

namespace Smbusd::Linux {

namespace {

// What no further try can mend.
struct Refusal : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// The kernel's own, when nobody has set another.
constexpr std::chrono::milliseconds usualTimeout{ 1000 };

Bus::Outcome failed( int error ) { return { {}, explain( error ), error == EOPNOTSUPP }; }

// A byte that is sent or received alone has no register, however wide those are.
unsigned offsetBytesOf( const Bus::Transfer &transfer, const BoardFiles::ChipRules &rules ) {
   const unsigned bytes = rules.offsetBytes ? rules.offsetBytes : transfer.offsetBytes;
   if ( !transfer.isReceiveByte() && transfer.offset >> 8 * bytes != 0 )
      throw Refusal( fmt::format( "register {:#x} does not fit the {} byte{} that address {:#04x} "
                                  "takes; the routes can give it more (\"offsetBytes\")",
                                  transfer.offset, bytes, bytes == 1 ? "" : "s",
                                  transfer.address ) );
   return bytes;
}

} // namespace

void LinuxBus::open() {
   std::unique_ptr<Adapter> adapter = openAdapter_();
   if ( const int error = adapter->functions( functions_ ) )
      throw AdapterError(
         fmt::format( "the adapter doesn't tell what it can do: {}", std::strerror( error ) ) );
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
      return { {}, refusal.what(), true };
   } catch ( const AdapterError &error ) {
      return { {}, error.what(), true };
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
         throw Refusal( "a block read from a chip whose registers take two bytes is none of the "
                        "kernel's protocols" );
      throw Refusal( fmt::format( "the adapter lacks {}{}{}", functionNames( missing ),
                                  missing && instead ? ", and in its place " : "",
                                  functionNames( instead ) ) );
   }
   address( transfer, rules );
   timeoutIs( transfer.timeout );
   return call && !missing ? smbus( *call, transfer ) : messages( transfer, offsetBytes );
}

void LinuxBus::address( const Bus::Transfer &transfer, const BoardFiles::ChipRules &rules ) {
   // Each time: a kernel driver may have come since.
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
      throw Refusal( fmt::format( "the adapter takes no time limit of {} ms: {}", timeout.count(),
                                  std::strerror( error ) ) );
   timeout_ = timeout;
}

Bus::Outcome LinuxBus::smbus( const SmbusCall &call, const Bus::Transfer &transfer ) {
   if ( transfer.pec != pec_ ) {
      if ( const int error = adapter_->pec( transfer.pec ) )
         throw Refusal(
            fmt::format( "the adapter can't switch its PEC: {}", std::strerror( error ) ) );
      pec_ = transfer.pec;
   }
   i2c_smbus_data data = dataFor( call, transfer );
   const auto command = static_cast<uint8_t>(
      transfer.isReceiveByte() ? 0 : transfer.offset ); // its byte, to be sent
   const bool bare = transfer.isSendByte();
   if ( const int error =
           adapter_->smbus( call.readWrite, command, call.size, bare ? nullptr : &data ) )
      return failed( error );
   return { dataFrom( call, transfer, data ), {} };
}

Bus::Outcome LinuxBus::messages( const Bus::Transfer &transfer, unsigned offsetBytes ) {
   Messages messages( transfer, offsetBytes );
   if ( messages.tooLong() )
      throw Refusal( fmt::format( "over {} bytes in one message, and the kernel takes no more",
                                  maxMessageBytes ) );
   if ( const int error = adapter_->messages( messages.list() ) )
      return failed( error );
   Bus::Outcome outcome;
   outcome.data = messages.data( outcome.error );
   return outcome;
}

} // namespace Smbusd::Linux
