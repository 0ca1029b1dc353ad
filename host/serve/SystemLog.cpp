#include "host/serve/SystemLog.h"

#include "host/journal/EventText.h"

#include <cstdlib>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/stat.h>
#include <sys/uio.h>

#define SD_JOURNAL_SUPPRESS_LOCATION // where this source sends it is of no use to anyone
#include <systemd/sd-journal.h>

namespace Host {
namespace {

// One for each kind of event, which stays for ever: `journalctl MESSAGE_ID=...` finds them.
constexpr std::string_view messageIdOf( Health::Event::What what ) {
   switch ( what ) {
   case Health::Event::What::Set:
      return "5f4c1b7e0f0d4c0aa1c0de3f8b6d9a21";
   case Health::Event::What::Clear:
      return "c2a9e6d84b5b4f3c9d1e7a60f2b8c453";
   default:
      return "91d37f02ae684d5c8b3f6e15c07a4d9e";
   }
}

// As syslog numbers them.
int priorityOf( const Health::Event &event ) {
   constexpr int critical = 2, warning = 4, notice = 5;
   if ( event.what != Health::Event::What::Set || event.level == Health::Level::Ok )
      return notice;
   return event.level == Health::Level::Critical ? critical : warning;
}

} // namespace

bool isSystemLog( int standardError ) {
   const char *stream = std::getenv( "JOURNAL_STREAM" );
   struct stat status {};
   return stream && ::fstat( standardError, &status ) == 0 &&
          fmt::format( "{}:{}", status.st_dev, status.st_ino ) == stream;
}

std::vector<std::string> systemLogFields( const Health::Event &event ) {
   std::vector<std::string> fields{ fmt::format( "MESSAGE={}: {}", kindOf( event ),
                                                 textOf( event ) ),
                                    fmt::format( "MESSAGE_ID={}", messageIdOf( event.what ) ),
                                    fmt::format( "PRIORITY={}", priorityOf( event ) ),
                                    "SYSLOG_IDENTIFIER=orbis-host",
                                    fmt::format( "ORBIS_EVENT={}", event.id ),
                                    fmt::format( "ORBIS_WHAT={}", nameOf( event.what ) ),
                                    fmt::format( "ORBIS_LEVEL={}", nameOf( event.level ) ),
                                    "ORBIS_CAUSE=" + event.cause };
   const auto add = [&]( const char *name, const std::string &text ) {
      if ( !text.empty() )
         fields.push_back( fmt::format( "{}={}", name, text ) );
   };
   add( "ORBIS_OBJECT", event.object );
   add( "ORBIS_VALUE", event.value );
   if ( event.number )
      fields.push_back( fmt::format( "ORBIS_NUMBER={}", *event.number ) );
   if ( event.limit )
      fields.push_back( fmt::format( "ORBIS_LIMIT={}", *event.limit ) );
   add( "ORBIS_UNIT", event.unit );
   for ( const std::string &object : event.explains ) // a field may be there several times
      add( "ORBIS_EXPLAINS", object );
   return fields;
}

bool toSystemLog( const Health::Event &event ) {
   std::vector<std::string> fields = systemLogFields( event );
   std::vector<iovec> parts;
   for ( std::string &field : fields )
      parts.push_back( { .iov_base = field.data(), .iov_len = field.size() } );
   return ::sd_journal_sendv( parts.data(), static_cast<int>( parts.size() ) ) >= 0;
}

} // namespace Host
