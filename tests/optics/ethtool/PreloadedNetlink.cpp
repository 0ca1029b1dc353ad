// As PreloadedModule.cpp, for what ethtool asks by netlink: single pages of a module of CMIS. If
// $ORBIS_MODULE_NETLINK is set, the file has the pages 00h, 01h, 02h, 10h and 11h behind the lower
// half; otherwise there is no netlink, so that ethtool asks by ioctl.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <dlfcn.h>
#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace {

using Message = std::vector<unsigned char>;

constexpr unsigned short familyId = 0x15;
int netlinkSocket = -1;
std::deque<Message> answers;

template <class Function>
Function next( const char *name ) {
   return reinterpret_cast<Function>( dlsym( RTLD_NEXT, name ) );
}

template <class Header>
void append( Message &message, const Header &header ) {
   const auto *bytes = reinterpret_cast<const unsigned char *>( &header );
   message.insert( message.end(), bytes, bytes + sizeof header );
}

Message attribute( unsigned short type, const Message &content ) {
   Message message;
   append( message, nlattr{ static_cast<__u16>( NLA_HDRLEN + content.size() ), type } );
   message.insert( message.end(), content.begin(), content.end() );
   message.resize( NLA_ALIGN( message.size() ) );
   return message;
}

template <class Number>
Message numberAttribute( unsigned short type, Number number ) {
   Message content;
   append( content, number );
   return attribute( type, content );
}

Message textAttribute( unsigned short type, const std::string &text ) {
   return attribute( type, Message( text.c_str(), text.c_str() + text.size() + 1 ) );
}

Message operator+( Message first, const Message &second ) {
   first.insert( first.end(), second.begin(), second.end() );
   return first;
}

void answer( unsigned short type, unsigned sequence, const Message &content ) {
   Message message;
   append( message,
           nlmsghdr{ static_cast<__u32>( NLMSG_HDRLEN + content.size() ), type, 0, sequence, 1 } );
   answers.push_back( message + content );
}

void answerError( const nlmsghdr &request, int error ) {
   Message content;
   append( content, nlmsgerr{ error, request } );
   answer( NLMSG_ERROR, request.nlmsg_seq, content );
}

Message generic( unsigned char command ) {
   Message message;
   append( message, genlmsghdr{ command, 1, 0 } );
   return message;
}

void answerFamily( const nlmsghdr &request ) {
   Message operations;
   for ( unsigned short i = 1; i <= ETHTOOL_MSG_USER_MAX; ++i )
      operations =
         operations + attribute( i, numberAttribute<__u32>( CTRL_ATTR_OP_ID, i ) +
                                       numberAttribute<__u32>( CTRL_ATTR_OP_FLAGS, 0x0E ) );
   const Message group = textAttribute( CTRL_ATTR_MCAST_GRP_NAME, ETHTOOL_MCGRP_MONITOR_NAME ) +
                         numberAttribute<__u32>( CTRL_ATTR_MCAST_GRP_ID, 2 );
   answer( GENL_ID_CTRL, request.nlmsg_seq,
           generic( CTRL_CMD_NEWFAMILY ) +
              textAttribute( CTRL_ATTR_FAMILY_NAME, ETHTOOL_GENL_NAME ) +
              numberAttribute<__u16>( CTRL_ATTR_FAMILY_ID, familyId ) +
              attribute( CTRL_ATTR_OPS, operations ) +
              attribute( CTRL_ATTR_MCAST_GROUPS, attribute( 1, group ) ) );
   answerError( request, 0 );
}

struct Wanted {
   unsigned offset = 0, length = 0, page = 0, bank = 0, address = 0;
};

unsigned numberIn( const unsigned char *content, size_t size ) {
   unsigned number = 0;
   std::memcpy( &number, content, std::min( size, sizeof number ) );
   return number;
}

Wanted wantedIn( const unsigned char *bytes, size_t size ) {
   Wanted wanted;
   while ( size >= NLA_HDRLEN ) {
      nlattr header{};
      std::memcpy( &header, bytes, sizeof header );
      const unsigned number = numberIn( bytes + NLA_HDRLEN, header.nla_len - NLA_HDRLEN );
      switch ( header.nla_type & NLA_TYPE_MASK ) {
      case ETHTOOL_A_MODULE_EEPROM_OFFSET:
         wanted.offset = number;
         break;
      case ETHTOOL_A_MODULE_EEPROM_LENGTH:
         wanted.length = number;
         break;
      case ETHTOOL_A_MODULE_EEPROM_PAGE:
         wanted.page = number;
         break;
      case ETHTOOL_A_MODULE_EEPROM_BANK:
         wanted.bank = number;
         break;
      case ETHTOOL_A_MODULE_EEPROM_I2C_ADDRESS:
         wanted.address = number;
         break;
      }
      const size_t step = std::min<size_t>( NLA_ALIGN( header.nla_len ), size );
      bytes += step;
      size -= step;
   }
   return wanted;
}

// Empty if the module doesn't have them.
Message bytesOf( const Wanted &wanted ) {
   static constexpr unsigned pages[] = { 0x00, 0x01, 0x02, 0x10, 0x11 };
   const auto *page = std::find( std::begin( pages ), std::end( pages ), wanted.page );
   const bool isUpper = wanted.offset >= 128;
   if ( wanted.bank || wanted.address != 0x50 ||
        wanted.offset + wanted.length > ( isUpper ? 256 : 128 ) ||
        ( isUpper && page == std::end( pages ) ) )
      return {};
   Message bytes( wanted.length );
   FILE *file = std::fopen( std::getenv( "ORBIS_MODULE" ), "rb" );
   if ( !file )
      return {};
   std::fseek( file, wanted.offset + ( isUpper ? 128 * ( page - pages ) : 0 ), SEEK_SET );
   bytes.resize( std::fread( bytes.data(), 1, bytes.size(), file ) );
   std::fclose( file );
   return bytes;
}

void answerEeprom( const nlmsghdr &request, const unsigned char *attributes ) {
   const Wanted wanted = wantedIn( attributes, request.nlmsg_len - NLMSG_HDRLEN - GENL_HDRLEN );
   const Message bytes = bytesOf( wanted );
   if ( bytes.empty() )
      return answerError( request, -EINVAL );
   const Message device = numberAttribute<__u32>( ETHTOOL_A_HEADER_DEV_INDEX, 2 ) +
                          textAttribute( ETHTOOL_A_HEADER_DEV_NAME, "eth0" );
   answer( familyId, request.nlmsg_seq,
           generic( ETHTOOL_MSG_MODULE_EEPROM_GET_REPLY ) +
              attribute( ETHTOOL_A_MODULE_EEPROM_HEADER | NLA_F_NESTED, device ) +
              attribute( ETHTOOL_A_MODULE_EEPROM_DATA, bytes ) );
   answerError( request, 0 );
}

} // namespace

extern "C" int socket( int family, int type, int protocol ) noexcept {
   static const auto real = next<int ( * )( int, int, int )>( "socket" );
   if ( family != AF_NETLINK )
      return real( family, type, protocol );
   if ( std::getenv( "ORBIS_MODULE_NETLINK" ) )
      return netlinkSocket = real( AF_UNIX, SOCK_DGRAM, 0 );
   errno = EPROTONOSUPPORT;
   return -1;
}

extern "C" int setsockopt( int socket, int level, int name, const void *value,
                           socklen_t size ) noexcept {
   static const auto real =
      next<int ( * )( int, int, int, const void *, socklen_t )>( "setsockopt" );
   return socket == netlinkSocket ? 0 : real( socket, level, name, value, size );
}

extern "C" int bind( int socket, const sockaddr *address, socklen_t size ) noexcept {
   static const auto real = next<int ( * )( int, const sockaddr *, socklen_t )>( "bind" );
   return socket == netlinkSocket ? 0 : real( socket, address, size );
}

extern "C" int getsockname( int socket, sockaddr *address, socklen_t *size ) noexcept {
   static const auto real = next<int ( * )( int, sockaddr *, socklen_t * )>( "getsockname" );
   if ( socket != netlinkSocket )
      return real( socket, address, size );
   const sockaddr_nl own{ AF_NETLINK, 0, 1, 0 };
   std::memcpy( address, &own, sizeof own );
   *size = sizeof own;
   return 0;
}

extern "C" ssize_t sendto( int socket, const void *data, size_t size, int flags,
                           const sockaddr *address, socklen_t addressSize ) {
   static const auto real =
      next<ssize_t ( * )( int, const void *, size_t, int, const sockaddr *, socklen_t )>(
         "sendto" );
   if ( socket != netlinkSocket )
      return real( socket, data, size, flags, address, addressSize );
   nlmsghdr request{};
   std::memcpy( &request, data, sizeof request );
   if ( request.nlmsg_type == GENL_ID_CTRL )
      answerFamily( request );
   else
      answerEeprom( request,
                    static_cast<const unsigned char *>( data ) + NLMSG_HDRLEN + GENL_HDRLEN );
   return static_cast<ssize_t>( size );
}

extern "C" ssize_t recvmsg( int socket, msghdr *message, int flags ) {
   static const auto real = next<ssize_t ( * )( int, msghdr *, int )>( "recvmsg" );
   if ( socket != netlinkSocket )
      return real( socket, message, flags );
   if ( answers.empty() ) {
      errno = EAGAIN;
      return -1;
   }
   const Message first = answers.front();
   answers.pop_front();
   std::memcpy( message->msg_iov[0].iov_base, first.data(), first.size() );
   const sockaddr_nl kernel{ AF_NETLINK, 0, 0, 0 };
   std::memcpy( message->msg_name, &kernel, sizeof kernel );
   message->msg_namelen = sizeof kernel;
   message->msg_flags = 0;
   return static_cast<ssize_t>( first.size() );
}
