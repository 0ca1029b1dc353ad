// Preloaded before ethtool: every device has a module, whose memory is the file $ORBIS_MODULE, of
// the type $ORBIS_MODULE_TYPE of linux/ethtool.h. There is no netlink, so that ethtool asks by
// ioctl.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>

namespace {

FILE *moduleFile() {
   const char *path = std::getenv( "ORBIS_MODULE" );
   return path ? std::fopen( path, "rb" ) : nullptr;
}

int answerInfo( ethtool_modinfo &info ) {
   FILE *file = moduleFile();
   if ( !file )
      return -1;
   std::fseek( file, 0, SEEK_END );
   info.type = static_cast<__u32>( std::atoi( std::getenv( "ORBIS_MODULE_TYPE" ) ) );
   info.eeprom_len = static_cast<__u32>( std::ftell( file ) );
   std::fclose( file );
   return 0;
}

int answerBytes( ethtool_eeprom &wanted ) {
   FILE *file = moduleFile();
   if ( !file )
      return -1;
   std::fseek( file, wanted.offset, SEEK_SET );
   const size_t read = std::fread( wanted.data, 1, wanted.len, file );
   std::fclose( file );
   return read == wanted.len ? 0 : -1;
}

} // namespace

extern "C" int ioctl( int, unsigned long request, ... ) noexcept {
   va_list arguments;
   va_start( arguments, request );
   const auto *interface = va_arg( arguments, const ifreq * );
   va_end( arguments );
   if ( request == SIOCETHTOOL ) {
      void *data = interface->ifr_data;
      switch ( *static_cast<const __u32 *>( data ) ) {
      case ETHTOOL_GMODULEINFO:
         return answerInfo( *static_cast<ethtool_modinfo *>( data ) );
      case ETHTOOL_GMODULEEEPROM:
         return answerBytes( *static_cast<ethtool_eeprom *>( data ) );
      }
   }
   errno = EOPNOTSUPP;
   return -1;
}
