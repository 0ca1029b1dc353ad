#include "host/session/CageModules.h"

namespace Host {

std::vector<CageModule> modulesOf( const BoardFiles::Board &board, const Supervisor &supervisor,
                                   const BoardReport &report, Time now ) {
   std::vector<CageModule> modules;
   for ( size_t i = 0; i < board.objects.size(); ++i ) {
      if ( board.objects[i].kind != BoardFiles::Kind::Module )
         continue;
      CageModule module{ .cage = board.objects[i].health.in.value_or( "" ),
                         .state = report[i].state,
                         .fault = report[i].fault,
                         .age = report[i].age };
      if ( const ModuleRecord *record = supervisor.module( i ) ) {
         module.age = std::chrono::duration<double>( now - record->at ).count();
         module.image = record->image;
         module.module = record->module;
      }
      modules.push_back( std::move( module ) );
   }
   return modules;
}

} // namespace Host
