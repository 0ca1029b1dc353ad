// What a client of the control socket asks of a simulated board: frames, one behind the other. The
// board is the same for all inputs and has to stand what earlier ones left behind.
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Quiet.h"
#include "fuzz/SmallBoard.h"
#include "simulator/board/Controls.h"
#include "simulator/board/SimulatedBoard.h"
#include "smbusd/server/Buffers.h"
#include "sockets/Frames.h"

namespace {

struct Board {
   Fuzz::NoTime real{};
   Simulator::SimulationClock clock{ real, 0 };
   Simulator::SimulatedBoard board{ Fuzz::smallTopology, Fuzz::smallSimulation, clock };
   Simulator::Controls controls{ board.bench(), clock };
};

bool isListing( const SmbusControl::Request &request ) { return request.has_list(); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   Fuzz::quiet();
   static Board board;
   std::string_view rest = Fuzz::textOf( data, size );
   for ( int listings = 0; listings < 2; ) {
      const Sockets::Frame frame = Sockets::firstFrame( rest );
      if ( frame.state != Sockets::Frame::State::Whole )
         return 0;
      rest.remove_prefix( frame.size );
      SmbusControl::Request request;
      if ( !request.ParseFromArray( frame.message.data(),
                                    static_cast<int>( frame.message.size() ) ) )
         continue;
      listings += isListing( request );
      const SmbusControl::Response response = board.controls.answer( request );
      SmbusControl::Response read;
      Fuzz::expect( read.ParseFromString( response.SerializeAsString() ),
                    "a client can read the answer" );
   }
   return 0;
}
