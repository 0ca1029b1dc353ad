#include "smbusd/busses/linux/DevAdapter.h"

#include "smbusd/busses/linux/Claim.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <sys/ioctl.h>
#include <unistd.h>

extern "C" { // the header itself doesn't declare it
#include <i2c/smbus.h>
}

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <thread>

namespace Smbusd::Linux {

namespace {

class DevAdapter final : public Adapter {
 public:
   DevAdapter( int fd, std::string devices ) : fd_( fd ), devices_( std::move( devices ) ) {}
   ~DevAdapter() override { close( fd_ ); }
   DevAdapter( const DevAdapter & ) = delete;
   DevAdapter &operator=( const DevAdapter & ) = delete;

   int functions( unsigned long &bits ) override { return control( I2C_FUNCS, &bits ); }
   int address( uint8_t address, bool force ) override {
      return control( force ? I2C_SLAVE_FORCE : I2C_SLAVE, static_cast<unsigned long>( address ) );
   }
   int pec( bool on ) override { return control( I2C_PEC, static_cast<unsigned long>( on ) ); }
   int timeout( std::chrono::milliseconds limit ) override {
      return control( I2C_TIMEOUT, static_cast<unsigned long>( limit.count() / 10 ) );
   }
   int smbus( char readWrite, uint8_t command, int size, i2c_smbus_data *data ) override {
      return -i2c_smbus_access( fd_, readWrite, command, size, data );
   }
   int messages( std::span<i2c_msg> messages ) override {
      i2c_rdwr_ioctl_data all{ messages.data(), static_cast<uint32_t>( messages.size() ) };
      return control( I2C_RDWR, &all );
   }
   std::string driverAt( uint8_t address ) override {
      std::error_code ignored;
      return std::filesystem::read_symlink( fmt::format( "{}-{:04x}/driver", devices_, address ),
                                            ignored )
         .filename();
   }
   void pause( std::chrono::milliseconds time ) override {
      if ( time.count() > 0 )
         std::this_thread::sleep_for( time );
   }

 private:
   template <typename Argument>
   int control( unsigned long request, Argument argument ) {
      return ioctl( fd_, request, argument ) < 0 ? errno : 0;
   }

   const int fd_;
   const std::string devices_; // and the start of its devices' names
};

} // namespace

std::unique_ptr<Adapter> openDevAdapter( unsigned number, const Places &places, bool claims ) {
   const std::string path = fmt::format( "{}/i2c-{}", places.dev, number );
   const int fd = open( path.c_str(), O_RDWR | O_CLOEXEC );
   if ( fd < 0 ) {
      const char *hint = "";
      if ( errno == ENOENT || errno == ENXIO )
         hint = "; is the module i2c-dev loaded?";
      else if ( errno == EACCES || errno == EPERM )
         hint = "; only its owner and group may open it";
      throw AdapterError( fmt::format( "{}: {}{}", path, std::strerror( errno ), hint ) );
   }
   auto adapter = std::make_unique<DevAdapter>(
      fd, fmt::format( "{}/bus/i2c/devices/{}", places.sys, number ) );
   constexpr off_t whole = 0;
   const std::string others = claims ? claim( fd, 0, whole ) : "";
   if ( !others.empty() )
      throw AdapterError( fmt::format( "{}: {}", path, others ) );
   return adapter;
}

} // namespace Smbusd::Linux
