#include "simulator/board/Controls.h"

#include "simulator/chips/modules/ModuleChip.h"

#include <fmt/format.h>

#include <cmath>

namespace Simulator {

namespace {

void copy( const Quantity &from, SmbusControl::Quantity &to ) {
   to.set_name( from.name );
   to.set_unit( from.unit );
   to.set_value( from.get() );
   to.set_settable( bool( from.set ) );
}

double within( double value, double least, double most, const char *unit ) {
   if ( !( value >= least && value <= most ) )
      throw BenchError( fmt::format( "{} is not within {} to {}{}", value, least, most, unit ) );
   return value;
}

Stuck stuckOf( SmbusControl::Stuck asked ) {
   switch ( asked ) {
   case SmbusControl::NOT_STUCK:
      return Stuck::No;
   case SmbusControl::UNTIL_CLOCKS:
      return Stuck::UntilClocks;
   case SmbusControl::UNTIL_RESET:
      return Stuck::UntilReset;
   default:
      return Stuck::ForEver;
   }
}

} // namespace

SmbusControl::Response Controls::answer( const SmbusControl::Request &request ) {
   SmbusControl::Response response;
   try {
      const std::lock_guard lock( bench_.mutex() );
      carryOut( request, response );
   } catch ( const BenchError &error ) {
      response.set_error( error.what() );
   }
   return response;
}

void Controls::carryOut( const SmbusControl::Request &request, SmbusControl::Response &response ) {
   using SmbusControl::Request;
   constexpr double year = 365 * 86400;
   switch ( request.what_case() ) {
   case Request::kList:
      return describe( *response.mutable_state(), true );
   case Request::kTime:
      return describe( *response.mutable_state(), false );
   case Request::kGet:
      return copy( bench_.quantity( request.get().part(), request.get().name() ),
                   *response.mutable_quantity() );
   case Request::kSet:
      return bench_.quantityIs( request.set().name().part(), request.set().name().name(),
                                request.set().value() );
   case Request::kPull:
      return bench_.pull( request.pull() );
   case Request::kInsert:
      return bench_.insert( request.insert() );
   case Request::kFault:
      return addFault( request.fault() );
   case Request::kClearFaults:
      return bench_.chip( request.clear_faults() ).faultsAre( {} );
   case Request::kStep:
      return step( within( request.step(), 0, year, " s" ) );
   case Request::kSpeed:
      return clock_.speedIs( within( request.speed(), 0, 1e6, "" ) );
   case Request::kPower:
      return power( request.power() );
   case Request::kTrace:
      return;
   case Request::kLoad: // the server answers these, not the board
   case Request::kLast:
   case Request::kLease:
   case Request::WHAT_NOT_SET:
      throw BenchError( "a request for nothing that is known" );
   }
}

void Controls::step( double seconds ) {
   using namespace std::chrono;
   if ( !clock_.step( duration_cast<Bus::Clock::Time>( duration<double>( seconds ) ) ) )
      throw BenchError(
         fmt::format( "{} s are too many: the simulation's clock is at {:.0f} s and "
                      "ends at {} s. Start the server again",
                      seconds, duration<double>( clock_.now() ).count(),
                      duration_cast<std::chrono::seconds>( SimulationClock::end ).count() ) );
}

void Controls::describe( SmbusControl::State &state, bool whole ) const {
   state.set_seconds( std::chrono::duration<double>( clock_.now() ).count() );
   state.set_speed( clock_.speed() );
   state.set_powered( bench_.powered() );
   state.set_transfers( bench_.traffic().transfers );
   state.set_bytes( bench_.traffic().bytes );
   if ( !whole )
      return;
   for ( const Bench::Seated &seated : bench_.chips() ) {
      SmbusControl::Chip &chip = *state.add_chip();
      chip.set_name( seated.chip->name() );
      chip.set_kind( seated.kind );
      chip.set_address( seated.address );
      chip.set_present( seated.chip->present() );
      chip.set_faulty( seated.chip->faults().any() );
      for ( const Quantity &quantity : seated.chip->quantities() )
         copy( quantity, *chip.add_quantity() );
   }
   for ( const Bench::Module &module : bench_.modules() ) {
      state.add_module()->set_name( module.name );
      state.mutable_module()->rbegin()->set_present( module.present );
   }
}

void Controls::addFault( const SmbusControl::Fault &asked ) {
   Chip &chip = bench_.chip( asked.chip() );
   Faults faults = chip.faults();
   if ( asked.has_nacks() ) {
      faults.nacks = asked.nacks();
      faults.outOf = asked.has_out_of() ? asked.out_of() : 1;
      if ( faults.outOf == 0 || faults.nacks > faults.outOf )
         throw BenchError(
            fmt::format( "a chip can't nack {} of {} transfers", faults.nacks, faults.outOf ) );
   }
   if ( asked.has_bad_pec() )
      faults.badPec = asked.bad_pec();
   if ( asked.has_stuck() )
      faults.stuck = stuckOf( asked.stuck() );
   if ( asked.has_slow_ms() )
      faults.slow = std::chrono::milliseconds( long( within( asked.slow_ms(), 0, 60000, " ms" ) ) );
   if ( asked.has_block_count() )
      faults.blockCount = static_cast<uint8_t>( within( asked.block_count(), 0, 255, "" ) );
   if ( asked.has_answer_size() )
      faults.answerSize = static_cast<unsigned>( within( asked.answer_size(), 0, 8192, " bytes" ) );
   if ( asked.has_corruption() )
      faults.corrupted[asked.corruption().register_()] =
         static_cast<uint8_t>( within( asked.corruption().mask(), 1, 255, "" ) );
   if ( asked.has_all_ones() )
      faults.allOnes = asked.all_ones();
   if ( asked.has_bad_checksum() || asked.has_stuck_page() || asked.has_wrong_page() ||
        asked.has_busy_ms() )
      addModuleFault( asked, chip, faults );
   chip.faultsAre( faults );
}

void Controls::addModuleFault( const SmbusControl::Fault &asked, const Chip &chip,
                               Faults &faults ) const {
   const auto *module = dynamic_cast<const ModuleChip *>( &chip );
   if ( !module )
      throw BenchError( fmt::format( "{} is not a transceiver module: it can't be busy, and has "
                                     "neither pages nor checksums",
                                     chip.name() ) );
   if ( ( asked.has_stuck_page() || asked.has_wrong_page() ) && !module->hasPages() )
      throw BenchError( fmt::format( "{} has no pages to choose from", chip.name() ) );
   if ( asked.has_bad_checksum() )
      faults.badChecksum = asked.bad_checksum();
   if ( asked.has_stuck_page() )
      faults.stuckPage = static_cast<uint8_t>( within( asked.stuck_page(), 0, 255, "" ) );
   if ( asked.has_wrong_page() )
      faults.wrongPage = static_cast<uint8_t>( within( asked.wrong_page(), 0, 255, "" ) );
   if ( asked.has_busy_ms() )
      faults.busyUntil = clock_.now() + std::chrono::milliseconds(
                                           long( within( asked.busy_ms(), 0, 60000, " ms" ) ) );
}

void Controls::power( SmbusControl::Power power ) {
   if ( power == SmbusControl::CYCLE )
      bench_.powerCycle();
   else
      bench_.powerIs( power == SmbusControl::ON );
}

} // namespace Simulator
