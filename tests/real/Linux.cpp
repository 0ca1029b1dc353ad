#include "Linux.h"

#include "StartedProgram.h"

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <sys/ioctl.h>
#include <unistd.h>

extern "C" {
#include <i2c/smbus.h>
}

#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace RealTest {

namespace fs = std::filesystem;

std::string readFile( const std::string &path ) {
   std::ifstream stream( path, std::ios::binary );
   std::string text{ std::istreambuf_iterator<char>( stream ), {} };
   EXPECT_TRUE( stream.is_open() ) << path;
   if ( text.ends_with( '\n' ) )
      text.pop_back();
   return text;
}

void writeFile( const std::string &path, const std::string &text ) {
   std::ofstream stream( path );
   stream << text << std::flush;
   EXPECT_TRUE( stream.good() ) << path << ": " << text;
}

std::string run( const std::vector<std::string> &command, int exitCode ) {
   TestSupport::StartedProgram program( command );
   const int code = program.wait();
   EXPECT_EQ( code, exitCode ) << fmt::format( "{}: ", fmt::join( command, " " ) )
                               << program.output() << program.errors();
   return program.output() + program.errors();
}

unsigned long waitsOf( pid_t process ) {
   const std::string label = "voluntary_ctxt_switches:";
   unsigned long waits = 0;
   for ( const auto &task : fs::directory_iterator( fmt::format( "/proc/{}/task", process ) ) ) {
      const std::string status = readFile( task.path() / "status" );
      waits += std::stoul( status.substr( status.find( label ) + label.size() ) );
   }
   return waits;
}

void loadModule( const std::string &name, const std::vector<std::string> &parameters ) {
   std::vector<std::string> command{ "/bin/modprobe", name };
   command.insert( command.end(), parameters.begin(), parameters.end() );
   run( command );
}

unsigned adapterNamed( const std::string &beginning ) {
   for ( const auto &entry : fs::directory_iterator( "/sys/class/i2c-dev" ) ) {
      const std::string name = entry.path().filename();
      // Those of a server that has just ended may go while this looks for another one.
      std::ifstream file( entry.path() / "name" );
      std::string adapter;
      if ( std::getline( file, adapter ) && adapter.starts_with( beginning ) )
         return static_cast<unsigned>( std::stoul( name.substr( 4 ) ) );
   }
   ADD_FAILURE() << "there is no adapter named " << beginning;
   return 0;
}

std::vector<std::string> devicesOf( const std::string &driver ) {
   std::vector<std::string> devices;
   for ( const auto &entry : fs::directory_iterator( "/sys/bus/i2c/drivers/" + driver ) ) {
      const std::string name = entry.path().filename();
      if ( std::isdigit( static_cast<unsigned char>( name[0] ) ) )
         devices.push_back( name );
   }
   return devices;
}

KernelDriver::KernelDriver( unsigned adapter, const std::string &type, uint8_t address )
   : adapter_( fmt::format( "/sys/bus/i2c/devices/i2c-{}", adapter ) ),
     address_( fmt::format( "{:#04x}", address ) ),
     device_( fmt::format( "/sys/bus/i2c/devices/{}-{:04x}", adapter, address ) ) {
   writeFile( adapter_ + "/new_device", type + " " + address_ );
   EXPECT_TRUE( fs::exists( device_ + "/driver" ) ) << type << " took no " << address_;
   std::error_code ignored;
   for ( const auto &entry : fs::directory_iterator( device_ + "/hwmon", ignored ) )
      hwmon_ = entry.path();
}

KernelDriver::~KernelDriver() { writeFile( adapter_ + "/delete_device", address_ ); }

long long KernelDriver::hwmon( const std::string &name ) const {
   const std::string text = readFile( hwmonFile( name ) );
   return text.empty() ? 0 : std::stoll( text );
}

long long KernelDriver::labelled( const std::string &label ) const {
   for ( const auto &entry : fs::directory_iterator( hwmon_ ) ) {
      const std::string name = entry.path().filename();
      const size_t at = name.rfind( "_label" );
      if ( at != name.npos && readFile( entry.path() ) == label )
         return hwmon( name.substr( 0, at ) + "_input" );
   }
   ADD_FAILURE() << "no input is labelled " << label;
   return 0;
}

StubChip::StubChip( unsigned adapter, uint8_t address )
   : fd_( open( fmt::format( "/dev/i2c-{}", adapter ).c_str(), O_RDWR | O_CLOEXEC ) ) {
   EXPECT_EQ( ioctl( fd_, I2C_SLAVE_FORCE, static_cast<unsigned long>( address ) ), 0 );
}

StubChip::~StubChip() { close( fd_ ); }

void StubChip::byteIs( uint8_t reg, uint8_t value ) {
   EXPECT_EQ( i2c_smbus_write_byte_data( fd_, reg, value ), 0 );
}

void StubChip::wordIs( uint8_t reg, uint16_t value ) {
   EXPECT_EQ( i2c_smbus_write_word_data( fd_, reg, value ), 0 );
}

} // namespace RealTest
