// A recording, from its bytes to the answers that a server gives by it.
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Quiet.h"
#include "smbus/Decode.h"
#include "smbus/RecordingFile.h"
#include "smbusd/record/Replay.h"

namespace {

void askAgain( const std::string &path, const Smbusd::Executors &executors ) {
   Bus::readRecording( path, [&]( const SmbusRecording::Entry &entry ) {
      try {
         const Bus::Transaction asked =
            Bus::decode( entry.transaction().request(), std::chrono::milliseconds::max() );
         const auto bus = executors.find( asked.bus );
         if ( asked.transfers.empty() )
            return;
         Fuzz::expect( bus != executors.end(), "a bus of the recording is there" );
         Smbus::TransactionResponse response;
         bus->second->run( asked, response );
         Fuzz::expect( response.error().find( "the recording has no such" ) == std::string::npos,
                       "what was recorded is known" );
      } catch ( const Bus::Refused & ) {
      }
   } );
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   Fuzz::quiet();
   const std::string &path = Fuzz::fileOf( data, size );
   try {
      Fuzz::expect( Bus::endOfRecording( path ) <= size, "the end is in the file" );
   } catch ( const Bus::RecordingError & ) {
   }
   try {
      askAgain( path, Smbusd::replay( path, []( Bus::Clock::Time ) {} ) );
   } catch ( const Bus::RecordingError & ) {
   }
   return 0;
}
