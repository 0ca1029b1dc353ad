#include "smbusd/Serve.h"
#include "smbusd/rights/WriteGuard.h"

#include <fmt/format.h>

namespace Smbusd {

bool checkPolicy( const Options &options ) {
   const BoardFiles::WritePolicy policy = BoardFiles::loadWritePolicy( options.policyToCheck );
   for ( const BoardFiles::WriteRow &row : policy.rows )
      fmt::print( "{}\n", toText( row ) );
   if ( policy.rows.empty() )
      fmt::print( "nobody but the server's own user may write\n" );
   if ( options.elsewhere )
      return true;
   bool valid = true;
   const WriteGuard guard( {}, policy, 0, People::ofThisMachine(),
                           [&valid]( const std::string &words ) {
                              valid = false;
                              fmt::print( stderr, "{}\n", words );
                           } );
   return valid;
}

} // namespace Smbusd
