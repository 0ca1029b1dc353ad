#include "host/serve/LastSettings.h"

#include "boardfiles/Json.h"
#include "host/JsonWriter.h"

#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <spdlog/spdlog.h>
#include <system_error>
#include <variant>

namespace Host {

namespace {

using BoardFiles::Kind;

// The reading that tells what was set.
const char *settingOf( Kind kind ) {
   return kind == Kind::Fan ? "target" : kind == Kind::Led ? "setting" : nullptr;
}

bool changes( const BoardFiles::SafeState &state, const BoardFiles::ObjectDescription &object ) {
   return std::any_of( state.writes.begin(), state.writes.end(), [&]( const auto &write ) {
      return std::find( object.chips.begin(), object.chips.end(), write.chip ) !=
             object.chips.end();
   } );
}

} // namespace

LastSettings::LastSettings( const BoardFiles::Board &board, std::filesystem::path file )
   : board_( board ), file_( std::move( file ) ) {
   for ( size_t i = 0; i < board.objects.size(); ++i )
      if ( settingOf( board.objects[i].kind ) && board.safeState &&
           changes( *board.safeState, board.objects[i] ) )
         objects_.push_back( i );
   read();
}

// A file that is damaged or gone only means that nothing is known.
void LastSettings::read() {
   if ( !std::filesystem::exists( file_ ) )
      return;
   BoardFiles::Findings findings;
   const auto json = BoardFiles::readJson( file_, findings );
   if ( !json ) {
      for ( const BoardFiles::Finding &finding : findings )
         spdlog::warn( "what was set last is not known: {}", toText( finding ) );
      return;
   }
   for ( const auto &[name, value, place] : json->members() )
      if ( const auto words = value.toText() )
         settings_[std::string( name )] = *words;
}

void LastSettings::look( const BoardReport &report ) {
   bool isNew = false;
   for ( const size_t object : objects_ ) {
      const ValueReport *set = report[object].find( settingOf( board_.objects[object].kind ) );
      if ( !set )
         continue;
      const Scalar &value = set->reading.value;
      const auto *number = std::get_if<int64_t>( &value );
      const auto *text = std::get_if<std::string>( &value );
      if ( !number && !text )
         continue;
      std::string words = number ? std::to_string( *number ) : *text;
      std::string &known = settings_[report[object].name];
      isNew |= known != words;
      known = std::move( words );
   }
   if ( isNew )
      write();
}

// The file is the one before or the new one, also when the machine stops meanwhile.
void LastSettings::write() {
   JsonWriter json;
   json.beginObject();
   for ( const auto &[name, words] : settings_ )
      json.member( name, words );
   const std::filesystem::path made = file_.string() + ".new";
   std::error_code error;
   {
      std::ofstream out( made );
      out << json.endObject().text() << '\n' << std::flush;
      if ( !out )
         error = std::make_error_code( std::errc::io_error );
   }
   if ( !error )
      std::filesystem::rename( made, file_, error );
   const std::string why =
      error ? fmt::format( "{}: {}; what was set last is known only as long as this process runs",
                           file_.string(), error.message() )
            : "";
   if ( !why.empty() && why != error_ )
      spdlog::warn( "{}", why );
   error_ = why;
}

std::vector<std::pair<size_t, Action>> LastSettings::actions() const {
   std::vector<std::pair<size_t, Action>> all;
   for ( const size_t object : objects_ ) {
      const auto set = settings_.find( board_.objects[object].name );
      if ( set == settings_.end() )
         continue;
      const auto action = parseAction( board_.objects[object].kind, { set->second } );
      if ( const auto *known = std::get_if<Action>( &action ) )
         all.emplace_back( object, *known );
      else
         spdlog::warn( "{}: {}: {}", file_.string(), set->first, std::get<std::string>( action ) );
   }
   return all;
}

std::string LastSettings::words() const {
   std::string words;
   for ( const size_t object : objects_ )
      if ( const auto set = settings_.find( board_.objects[object].name ); set != settings_.end() )
         words += fmt::format( "{}{} {}", words.empty() ? "" : ", ", set->first, set->second );
   return words.empty() ? "nothing" : words;
}

} // namespace Host
