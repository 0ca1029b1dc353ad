#include "host/plugin/Child.h"

#include "host/plugin/FrameBuffer.h"
#include "host/plugin/Messages.h"
#include "host/plugin/Objects.h"
#include "host/plugin/Services.h"
#include "host/plugin/SharedPage.h"

#include <algorithm>
#include <array>
#include <boost/asio.hpp>
#include <csignal>
#include <fmt/format.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <thread>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;

constexpr std::chrono::milliseconds longestWait( 100 ); // of a reading that is to be sent

class Child {
 public:
   Child( int socket, int page )
      : socket_( loop_, stream_protocol(), socket ), page_( page ),
        services_( loop_, [this]( int level, std::string text ) {
           traced( { level, std::move( text ), services_.runningTimerOwner() } );
        } ) {}

   void run() {
      receive();
      loop_.run();
   }

 private:
   void receive() {
      socket_.async_read_some(
         boost::asio::buffer( chunk_ ),
         [this]( const boost::system::error_code &failure, size_t length ) {
            if ( failure ) { // the parent ended, or closed the socket to end this process
               loop_.stop();
               return;
            }
            input_.append( { chunk_.data(), length } );
            while ( const auto message = input_.next() )
               handle( *message );
            receive();
         } );
   }

   void handle( const std::string &message ) {
      const auto command = decodeCommand( message );
      isAnswering_ = true;
      sent_ = std::chrono::steady_clock::now();
      const Done done =
         command ? std::visit( [this]( const auto &what ) { return execute( what ); }, *command )
                 : Done{ Fault{ .words = "the command can't be read" } };
      isAnswering_ = false;
      end( done );
      sendNow();
   }
   void end( const Done &done ) {
      page_.operationEnds();
      sendLater( done );
   }

   // The parent finds it on the page if the plug-in ends this process before it is sent.
   void sendLater( const Event &event ) {
      const std::string message = encode( event );
      if ( page_.keep( message ) )
         return;
      sendNow();
      if ( !page_.keep( message ) )
         send( message );
   }
   void sendNow() { send( page_.take() ); }
   void send( std::string_view messages ) {
      sent_ = std::chrono::steady_clock::now();
      boost::system::error_code ignored; // receive() notices when the parent ended
      boost::asio::write( socket_, boost::asio::buffer( messages ), ignored );
   }

   // Sends what explains a fault, and what the user reads. The user's are sent at once: an
   // operation may take long. The others are sent with the answer that they belong to, where there
   // is one. A timer's belong to none.
   void traced( const Trace &trace ) {
      const auto begins = [&trace]( const std::string &beginning ) {
         return trace.text.starts_with( beginning );
      };
      const bool isForUser = trace.level <= filter_.level;
      if ( !isForUser && trace.level != 0 && std::ranges::none_of( filter_.beginnings, begins ) )
         return;
      sendLater( trace );
      if ( isForUser || !isAnswering_ )
         sendNow();
   }

   // What was read long ago must not wait for an operation that may take long.
   void begins( std::string_view operation ) {
      const auto now = std::chrono::steady_clock::now();
      page_.operationBegins( operation, now );
      if ( now - sent_ > longestWait && !page_.unsent().empty() )
         sendNow();
   }

   Done execute( const LoadCommand &load ) {
      begins( "load" );
      topology_ = load.topology;
      filter_ = load.traces;
      return objects_.load( load.plugin );
   }

   Done execute( const InitCommand &init ) {
      begins( fmt::format( "pl_{}_init", plugInTypeOf( init.kind ) ) );
      return objects_.init( init.kind, topology_.c_str() );
   }

   Done execute( const AddCommand &add ) {
      begins( fmt::format( "pl_{}_add", plugInTypeOf( add.description.kind ) ) );
      services_.setTimerOwner( add.object );
      return objects_.add( add.object, add.description );
   }

   Done execute( const ReadCommand &command ) {
      std::optional<Done> done;
      for ( const size_t object : command.objects ) {
         if ( done )
            end( *done );
         const bool isFresh = std::ranges::find( command.fresh, object ) != command.fresh.end();
         done = objects_.read( object, isFresh, sinks() );
      }
      return done.value_or( Done{} );
   }

   Done execute( const ActCommand &command ) { return objects_.act( command, sinks() ); }

   Objects::Sinks sinks() {
      return { { .begun = [this]( std::string_view name ) { begins( name ); },
                 .done = [this]( const Reading &reading ) { sendLater( reading ); } },
               [this]( const Event &event ) { sendLater( event ); } };
   }

   boost::asio::io_context loop_{ 1 };
   stream_protocol::socket socket_;
   SharedPage page_;
   Services services_;
   std::array<char, 4096> chunk_{};
   FrameBuffer input_{};
   bool isAnswering_ = false; // a command runs
   SharedPage::Time sent_{};  // the last time that something was sent, or a command came
   std::string topology_{};
   TraceFilter filter_{};
   Objects objects_{ []( auto time ) { std::this_thread::sleep_for( time ); } };
};

} // namespace

int runChild( int socket, int page ) {
   ::prctl( PR_SET_PDEATHSIG, SIGKILL ); // also when a call of the plug-in hangs
   // Tools that list processes, and the accounts of the server, would show what /proc/self/exe is.
   ::prctl( PR_SET_NAME, "orbis-host" );
   const rlimit noCores{ 0, 0 }; // failed assertions are common here, and need no core files
   ::setrlimit( RLIMIT_CORE, &noCores );
   Child( socket, page ).run();
   return 0;
}

} // namespace Host
