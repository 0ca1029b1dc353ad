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

} // namespace

Recorder::Recorder( const std::string &path, const std::string &version, const Bus::Clock &clock )
   : path_( path ), start_( clock.now() ) {
   prepare( path );
   file_.open( path, std::ios::binary | std::ios::app );
   SmbusRecording::Entry entry;
   entry.mutable_start()->set_unix_seconds( std::time( nullptr ) );
   entry.mutable_start()->set_version( version );
   if ( !append( entry ) )
      throw std::runtime_error(
         fmt::format( "{}: can't write: {}", path, std::strerror( errno ) ) );
}

bool Recorder::append( const SmbusRecording::Entry &entry ) {
   file_ << Sockets::framed( entry );
   file_.flush();
   return file_.good();
}

void Recorder::write( const Smbus::TransactionRequest &request,
                      const Smbus::TransactionResponse &response, Bus::Clock::Time begun,
                      Bus::Clock::Time took ) {
   SmbusRecording::Entry entry;
   SmbusRecording::Transaction &transaction = *entry.mutable_transaction();
   transaction.set_begun_ns( static_cast<uint64_t>( ( begun - start_ ).count() ) );
   transaction.set_took_ns( static_cast<uint64_t>( took.count() ) );
   *transaction.mutable_request() = request;
   *transaction.mutable_response() = response;
   const std::lock_guard lock( mutex_ );
   if ( file_.good() && !append( entry ) )
      spdlog::error( "{}: recording stopped: {}", path_, std::strerror( errno ) );
}

} // namespace Smbusd
