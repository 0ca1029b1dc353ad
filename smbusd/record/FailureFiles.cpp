#include "smbusd/record/FailureFiles.h"

#include "smbus/BusLoads.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <vector>

namespace Smbusd {

namespace {

constexpr size_t maxKnown = 256; // errors

} // namespace

void FailureFiles::add( const std::string &frame, const std::string &error, Bus::Clock::Time now ) {
   // What was refused without a transfer tells nothing new.
   if ( !error.empty() && error.find( Bus::isQuarantined ) == error.npos && isNew( error, now ) ) {
      if ( missing_ == 0 )
         begin();
      missing_ = entriesAfter + 1;
   }
   if ( missing_ > 0 ) {
      append( frame );
      if ( --missing_ == 0 )
         file_.close();
   }
   before_.push_back( frame );
   bytesBefore_ += frame.size();
   while ( before_.size() > entriesBefore || bytesBefore_ > maxBytes / 2 ) {
      bytesBefore_ -= before_.front().size();
      before_.pop_front();
   }
}

bool FailureFiles::isNew( const std::string &error, Bus::Clock::Time now ) {
   const auto [known, isFirst] = known_.try_emplace( error, now );
   if ( !isFirst && now - known->second < again )
      return false;
   known->second = now;
   if ( known_.size() > maxKnown )
      known_.erase( std::min_element( known_.begin(), known_.end(), []( auto &one, auto &other ) {
         return one.second < other.second;
      } ) );
   return true;
}

// Makes a file for its owner alone, whose name is behind those of all before. Empty if that fails.
std::string FailureFiles::newFile() {
   std::string time = fmt::format( "{:%Y%m%dT%H%M%SZ}", fmt::gmtime( std::time( nullptr ) ) );
   number_ = time == time_ ? number_ + 1 : 0;
   time_ = std::move( time );
   for ( ;; ++number_ ) {
      std::string path = prefix_ + time_ + ( number_ > 0 ? fmt::format( "-{:03}", number_ ) : "" );
      const int fd =
         open( path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR );
      if ( fd >= 0 ) {
         close( fd );
         return path;
      }
      if ( errno != EEXIST )
         return {};
   }
}

void FailureFiles::begin() {
   const std::string path = newFile();
   file_.open( path, std::ios::binary | std::ios::app );
   if ( path.empty() || !file_ ) {
      spdlog::error( "{}*: can't keep what is around a failure: {}", prefix_,
                     std::strerror( errno ) );
      return;
   }
   spdlog::info( "{}: what is around a failed transaction", path );
   removeOldest();
   written_ = 0;
   append( start_ );
   for ( const std::string &earlier : before_ )
      append( earlier );
}

// What is beyond the bound is left out.
void FailureFiles::append( const std::string &frame ) {
   if ( written_ + frame.size() > maxBytes )
      return;
   written_ += frame.size();
   file_ << frame;
   file_.flush();
}

void FailureFiles::removeOldest() const {
   namespace fs = std::filesystem;
   const fs::path prefix( prefix_ );
   const fs::path folder = prefix.has_parent_path() ? prefix.parent_path() : ".";
   std::error_code ignored;
   std::vector<fs::path> files;
   for ( const auto &entry : fs::directory_iterator( folder, ignored ) ) {
      if ( entry.path().filename().string().starts_with( prefix.filename().string() ) )
         files.push_back( entry.path() );
   }
   std::sort( files.begin(), files.end() ); // their names are times
   for ( size_t i = 0; i + maxFiles < files.size(); ++i )
      fs::remove( files[i], ignored );
}

} // namespace Smbusd
