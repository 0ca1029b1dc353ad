#include "host/plugin/Messages.h"

#include "host/plugin/Child.pb.h"

#include <algorithm>
#include <limits>
#include <sockets/Frames.h>
#include <stdexcept>

namespace Host {
namespace {

void fill( HostChild::Command &message, const LoadCommand &load ) {
   message.mutable_load()->set_plugin( load.plugin );
   message.mutable_load()->set_topology( load.topology );
   message.mutable_load()->set_trace_level( load.traces.level );
   for ( const std::string &beginning : load.traces.beginnings )
      message.mutable_load()->add_trace_beginnings( beginning );
}

void fill( HostChild::Command &message, const InitCommand &init ) {
   message.mutable_init()->set_kind( std::string( nameOf( init.kind ) ) );
}

void fill( HostChild::Command &message, const AddCommand &command ) {
   const BoardFiles::ObjectDescription &object = command.description;
   HostChild::Command::Add &add = *message.mutable_add();
   add.set_object( static_cast<uint32_t>( command.object ) );
   add.set_kind( std::string( nameOf( object.kind ) ) );
   add.set_name( object.name );
   add.set_text( object.text );
   add.set_alert( object.alert );
   add.set_critical( object.critical );
   add.set_value( object.value );
   add.set_reads( object.reads );
   add.set_second( object.second );
}

void fill( HostChild::Command &message, const ReadCommand &read ) {
   message.mutable_read(); // also where there are no objects
   for ( const size_t object : read.objects )
      message.mutable_read()->add_objects( static_cast<uint32_t>( object ) );
   for ( const size_t object : read.fresh )
      message.mutable_read()->add_fresh( static_cast<uint32_t>( object ) );
}

void fill( HostChild::Command &message, const ActCommand &command ) {
   HostChild::Command::Act &act = *message.mutable_act();
   act.set_object( static_cast<uint32_t>( command.object ) );
   act.set_operation( command.action.operation );
   for ( const int64_t argument : command.action.arguments )
      act.add_arguments( argument );
}

void fill( HostChild::Event::Fault &message, const Fault &fault ) {
   if ( fault.status )
      message.set_status( *fault.status );
   message.set_words( fault.words );
}

void fill( HostChild::Event &message, const Trace &trace ) {
   message.mutable_trace()->set_level( trace.level );
   message.mutable_trace()->set_text( trace.text );
   if ( trace.timerOwner )
      message.mutable_trace()->set_timer_owner( static_cast<uint32_t>( *trace.timerOwner ) );
}

void set( HostChild::Event::Reading &, std::monostate ) {}
void set( HostChild::Event::Reading &message, bool flag ) { message.set_flag( flag ); }
void set( HostChild::Event::Reading &message, int64_t integer ) { message.set_integer( integer ); }
void set( HostChild::Event::Reading &message, double real ) { message.set_real( real ); }
void set( HostChild::Event::Reading &message, const std::string &text ) {
   message.set_text( text );
}

void fill( HostChild::Event &message, const Reading &what ) {
   HostChild::Event::Reading &reading = *message.mutable_reading();
   reading.set_name( what.name );
   reading.set_unit( what.unit );
   reading.set_state( std::string( nameOf( what.state ) ) );
   std::visit( [&reading]( const auto &value ) { set( reading, value ); }, what.value );
   fill( *reading.mutable_fault(), what.fault );
}

void fill( HostChild::Event &message, const SupplyLimits &limits ) {
   auto &registers = *message.mutable_supply_limits()->mutable_registers();
   for ( const auto &[command, value] : limits.registers )
      registers[command] = value;
}

void fill( HostChild::Event &message, const ModuleMemory &memory ) {
   HostChild::Event::ModuleMemory &filled = *message.mutable_module_memory();
   filled.set_begins( memory.begins );
   for ( const Optics::Image::Run &run : memory.image.runs() ) {
      HostChild::Event::ModuleMemory::Piece &piece = *filled.add_pieces();
      piece.set_address( run.region.address );
      piece.set_upper( run.region.upper );
      piece.set_bank( run.region.bank );
      piece.set_page( run.region.page );
      piece.set_first( run.first );
      piece.set_bytes( run.bytes.data(), run.bytes.size() );
   }
}

void fill( HostChild::Event &message, const Done &done ) {
   message.mutable_done();
   if ( done.fault )
      fill( *message.mutable_done()->mutable_fault(), *done.fault );
}

std::optional<Command> toCommand( const HostChild::Command::Init &init ) {
   const auto kind = BoardFiles::kindOf( init.kind() );
   return kind ? std::optional<Command>( InitCommand{ *kind } ) : std::nullopt;
}

std::optional<Command> toCommand( const HostChild::Command::Add &add ) {
   const auto kind = BoardFiles::kindOf( add.kind() );
   if ( !kind || add.value() > std::numeric_limits<uint8_t>::max() )
      return {};
   return AddCommand{ add.object(),
                      { .kind = *kind,
                        .name = add.name(),
                        .text = add.text(),
                        .alert = add.alert(),
                        .critical = add.critical(),
                        .value = static_cast<uint8_t>( add.value() ),
                        .second = add.second(),
                        .reads = add.reads() } };
}

ActCommand toCommand( const HostChild::Command::Act &act ) {
   return { act.object(),
            { .operation = act.operation(),
              .arguments = { act.arguments().begin(), act.arguments().end() } } };
}

Fault toFault( const HostChild::Event::Fault &message ) {
   return { .status = message.has_status() ? std::optional<int>( message.status() ) : std::nullopt,
            .words = message.words() };
}

Scalar toScalar( const HostChild::Event::Reading &reading ) {
   switch ( reading.value_case() ) {
   case HostChild::Event::Reading::kFlag:
      return reading.flag();
   case HostChild::Event::Reading::kInteger:
      return int64_t{ reading.integer() };
   case HostChild::Event::Reading::kReal:
      return reading.real();
   case HostChild::Event::Reading::kText:
      return reading.text();
   default:
      return {};
   }
}

std::optional<Event> toEvent( const HostChild::Event::Reading &reading ) {
   const auto state = stateOf( reading.state() );
   if ( !state )
      return {};
   return Reading{ .name = reading.name(),
                   .unit = reading.unit(),
                   .state = *state,
                   .value = toScalar( reading ),
                   .fault = toFault( reading.fault() ) };
}

Trace toEvent( const HostChild::Event::Trace &trace ) {
   Trace event{ .level = trace.level(), .text = trace.text() };
   if ( trace.has_timer_owner() )
      event.timerOwner = trace.timer_owner();
   return event;
}

std::optional<Event> toEvent( const HostChild::Event::SupplyLimits &message ) {
   SupplyLimits limits;
   for ( const auto &[command, value] : message.registers() ) {
      if ( command > std::numeric_limits<uint8_t>::max() ||
           value > std::numeric_limits<uint16_t>::max() )
         return {};
      limits.registers[static_cast<uint8_t>( command )] = static_cast<uint16_t>( value );
   }
   return limits;
}

std::optional<Event> toEvent( const HostChild::Event::ModuleMemory &message ) {
   constexpr uint32_t byteMax = std::numeric_limits<uint8_t>::max();
   ModuleMemory memory{ .begins = message.begins() };
   for ( const HostChild::Event::ModuleMemory::Piece &piece : message.pieces() ) {
      if ( std::max( { piece.address(), piece.bank(), piece.page() } ) > byteMax )
         return {};
      const std::vector<uint8_t> bytes( piece.bytes().begin(), piece.bytes().end() );
      try {
         memory.image.put( { static_cast<uint8_t>( piece.address() ), piece.upper(),
                             static_cast<uint8_t>( piece.bank() ),
                             static_cast<uint8_t>( piece.page() ) },
                           piece.first(), bytes );
      } catch ( const std::out_of_range & ) {
         return {};
      }
   }
   return memory;
}

Done toEvent( const HostChild::Event::Done &done ) {
   return { done.has_fault() ? std::optional( toFault( done.fault() ) ) : std::nullopt };
}

template <class Message>
bool parse( Message &message, std::string_view bytes ) {
   return message.ParseFromArray( bytes.data(), static_cast<int>( bytes.size() ) );
}

} // namespace

std::string encode( const Command &command ) {
   HostChild::Command message;
   std::visit( [&message]( const auto &what ) { fill( message, what ); }, command );
   return Sockets::framed( message );
}

std::string encode( const Event &event ) {
   HostChild::Event message;
   std::visit( [&message]( const auto &what ) { fill( message, what ); }, event );
   return Sockets::framed( message );
}

std::optional<Command> decodeCommand( std::string_view bytes ) {
   HostChild::Command message;
   if ( !parse( message, bytes ) )
      return {};
   switch ( message.what_case() ) {
   case HostChild::Command::kLoad:
      return LoadCommand{ message.load().plugin(),
                          message.load().topology(),
                          { message.load().trace_level(),
                            { message.load().trace_beginnings().begin(),
                              message.load().trace_beginnings().end() } } };
   case HostChild::Command::kInit:
      return toCommand( message.init() );
   case HostChild::Command::kAdd:
      return toCommand( message.add() );
   case HostChild::Command::kRead:
      return ReadCommand{ { message.read().objects().begin(), message.read().objects().end() },
                          { message.read().fresh().begin(), message.read().fresh().end() } };
   case HostChild::Command::kAct:
      return toCommand( message.act() );
   default:
      return {};
   }
}

std::optional<Event> decodeEvent( std::string_view bytes ) {
   HostChild::Event message;
   if ( !parse( message, bytes ) )
      return {};
   switch ( message.what_case() ) {
   case HostChild::Event::kTrace:
      return toEvent( message.trace() );
   case HostChild::Event::kReading:
      return toEvent( message.reading() );
   case HostChild::Event::kDone:
      return toEvent( message.done() );
   case HostChild::Event::kSupplyLimits:
      return toEvent( message.supply_limits() );
   case HostChild::Event::kModuleMemory:
      return toEvent( message.module_memory() );
   default:
      return {};
   }
}

} // namespace Host
