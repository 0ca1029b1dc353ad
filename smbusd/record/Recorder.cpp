#include "smbusd/record/Recorder.h"

#include "smbus/RecordingFile.h"
#include "sockets/Frames.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>

namespace Smbusd {

namespace {

void prepare( const std::string &path ) {
   const int fd = open( path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR );
   if ( fd < 0 )
      return; // the recorder tells why
   close( fd );
   std::error_code unknown;
   if ( !std::filesystem::is_regular_file( path, unknown ) )
      return;
   const size_t end = Bus::endOfRecording( path );
   const auto bytes = std::filesystem::file_size( path );
   if ( end == bytes )
      return;
   spdlog::warn( "{}: cut off {} bytes of an entry that was not finished", path, bytes - end );
   std::filesystem::resize_file( path, end );
}

std::string startOf( const std::string &version ) {
   SmbusRecording::Entry entry;
   entry.mutable_start()->set_unix_seconds( std::time( nullptr ) );
   entry.mutable_start()->set_version( version );
   return Sockets::framed( entry );
}

} // namespace

Recorder::Recorder( const std::string &path, const std::string &version, const Bus::Clock &clock,
                    std::optional<uint64_t> kept )
   : path_( path ), clock_( clock ), start_( clock.now() ), kept_( kept ),
     startFrame_( startOf( version ) ) {
   open();
   if ( !append( startFrame_ ) )
      throw std::runtime_error(
         fmt::format( "{}: can't write: {}", path, std::strerror( errno ) ) );
   if ( kept_ )
      failures_.emplace( path, startFrame_ );
}

void Recorder::open() {
   prepare( path_ );
   file_.open( path_, std::ios::binary | std::ios::app );
   std::error_code unknown;
   written_ = std::filesystem::is_regular_file( path_, unknown )
                 ? std::filesystem::file_size( path_, unknown )
                 : 0;
}

void Recorder::startAnew() {
   file_.close();
   if ( std::rename( path_.c_str(), Bus::earlierFile( path_ ).c_str() ) != 0 ) {
      file_.setstate( std::ios::failbit );
      return;
   }
   open();
   append( startFrame_ );
}

bool Recorder::append( const std::string &frame ) {
   file_ << frame;
   file_.flush();
   written_ += frame.size();
   return file_.good();
}

void Recorder::write( const Smbus::TransactionRequest &request,
                      const Smbus::TransactionResponse &response, Bus::Clock::Time begun,
                      Bus::Clock::Time took ) {
   const std::lock_guard lock( mutex_ ); // so that there is one copy of a large transaction
   if ( !file_.good() )
      return;
   SmbusRecording::Entry entry;
   SmbusRecording::Transaction &transaction = *entry.mutable_transaction();
   transaction.set_begun_ns( static_cast<uint64_t>( ( begun - start_ ).count() ) );
   transaction.set_took_ns( static_cast<uint64_t>( took.count() ) );
   *transaction.mutable_request() = request;
   *transaction.mutable_response() = response;
   const std::string frame = Sockets::framed( entry );
   if ( kept_ && written_ + frame.size() > *kept_ / 2 )
      startAnew();
   if ( !file_.good() || !append( frame ) )
      spdlog::error( "{}: recording stopped: {}", path_, std::strerror( errno ) );
   if ( failures_ )
      failures_->add( frame, response.failed() ? response.error() : "", clock_.now() );
}

} // namespace Smbusd
