#include "host/serve/BoardMetrics.h"

#include "host/serve/BoardFamilies.h"
#include "host/serve/BusMetrics.h"
#include "host/serve/ObjectMetrics.h"

#include <fmt/format.h>
#include <utility>

namespace Host {
namespace {

using Health::Event;
using Health::Level;
using Metrics::Labels;

void addServe( const BoardFigures &figures, BoardFamilies &to ) {
   const ServeFigures &serve = figures.serve;
   to[Metric::Build].add( { { "version", ORBIS_VERSION } }, 1 );
   to[Metric::Board].add( { { "board", figures.name } }, 1 );
   const ProcessFigures &process = serve.process;
   const std::pair<Metric, double> numbers[] = {
      { Metric::ProcessCpu, process.cpuSeconds },
      { Metric::ProcessMemory, static_cast<double>( process.residentBytes ) },
      { Metric::ProcessStart, process.startTime },
      { Metric::ProcessDescriptors, static_cast<double>( process.descriptors ) },
      { Metric::ProcessDescriptorLimit, static_cast<double>( process.descriptorLimit ) },
      { Metric::PlugInUp, serve.hasPlugIn },
      { Metric::ChildStarts, static_cast<double>( serve.childStarts ) },
      { Metric::Rounds, static_cast<double>( serve.rounds ) }
   };
   for ( const auto &[metric, number] : numbers )
      to[metric].add( {}, number );
   if ( serve.roundDuration )
      to[Metric::RoundDuration].add( {}, *serve.roundDuration );
   for ( const auto &[status, count] : serve.requests )
      to[Metric::HttpRequests].add( { { "code", fmt::format( "{}", status ) } },
                                    static_cast<double>( count ) );
}

double secondsOf( Health::WallTime time ) {
   return std::chrono::duration<double>( time.time_since_epoch() ).count();
}

void addCauses( const BoardFigures &figures, BoardFamilies &to ) {
   to[Metric::BoardLevel].add( {}, static_cast<double>( figures.level ) );
   std::map<Level, unsigned> open{ { Level::Warning, 0 }, { Level::Critical, 0 } };
   for ( const Health::Cause &cause : figures.causes ) {
      ++open[cause.level];
      const Labels labels{ { "cause", cause.key }, { "object", cause.object } };
      to[Metric::CauseSince].add( labels.with( "level", nameOf( cause.level ) ),
                                  secondsOf( cause.since ) );
      to[Metric::CauseAcknowledged].add( labels, cause.isAcknowledged );
      to[Metric::CauseHidden].add( labels, cause.isHidden );
   }
   for ( const auto &[level, count] : open )
      to[Metric::Causes].add( { { "level", nameOf( level ) } }, count );
}

// Also those that were never told: a counter that begins with 1 hides its first step.
void addEvents( const EventCounts &counted, BoardFamilies &to ) {
   EventCounts counts{ { { Event::What::Note, Level::Ok }, 0 },
                       { { Event::What::Clear, Level::Ok }, 0 } };
   for ( const auto what : { Event::What::Set, Event::What::Acknowledged } )
      for ( const auto level : { Level::Warning, Level::Critical } )
         counts[{ what, level }] = 0;
   for ( const auto &[which, count] : counted )
      counts[which] = count;
   for ( const auto &[which, count] : counts )
      to[Metric::Events].add(
         { { "kind", nameOf( which.first ) }, { "level", nameOf( which.second ) } },
         static_cast<double>( count ) );
}

// Of those that count members; others compare their texts.
void addRules( const BoardFigures &figures, BoardFamilies &to ) {
   for ( size_t i = 0; i < figures.rules.size(); ++i ) {
      const BoardFiles::BoardRule &rule = figures.board.rules[i];
      if ( rule.wanted == 0 )
         continue;
      const Labels labels{ { "rule", rule.name } };
      const std::pair<Metric, size_t> counts[] = { { Metric::RuleGood, figures.rules[i].good },
                                                   { Metric::RuleUnknown,
                                                     figures.rules[i].unknown },
                                                   { Metric::RuleWanted, rule.wanted },
                                                   { Metric::RuleNeeded, rule.needed } };
      for ( const auto &[metric, count] : counts )
         to[metric].add( labels, static_cast<double>( count ) );
   }
}

} // namespace

ServeFigures serveFigures( const Supervisor &supervisor,
                           const std::map<unsigned, uint64_t> &requests ) {
   ServeFigures figures{ .process = processFigures(),
                         .hasPlugIn = supervisor.plugInFault().empty(),
                         .childStarts = supervisor.childStarts(),
                         .rounds = supervisor.wholeRounds().count,
                         .requests = requests };
   if ( const auto &last = supervisor.wholeRounds().last )
      figures.roundDuration = std::chrono::duration<double>( *last ).count();
   return figures;
}

std::string boardMetrics( const BoardFigures &figures, Metrics::Format format ) {
   BoardFamilies families( format );
   addServe( figures, families );
   addCauses( figures, families );
   addEvents( figures.events, families );
   addRules( figures, families );
   for ( size_t i = 0; i < figures.report.size(); ++i )
      addObject( figures.board.objects[i], figures.report[i], families );
   addBusses( figures.loads, families );
   return families.text();
}

} // namespace Host
