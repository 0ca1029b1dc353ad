#include "commandline/WrongUsage.h"

#include "boardfiles/Nearest.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace CommandLine {

namespace {

std::vector<std::string> commandsOf( const CLI::App &app ) {
   std::vector<std::string> names;
   for ( const CLI::App *command : app.get_subcommands( []( const auto * ) { return true; } ) )
      if ( !command->get_group().empty() ) // else it is not for users
         names.push_back( command->get_name() );
   return names;
}

// The long options of the command and of those above it.
std::vector<std::string> optionsOf( const CLI::App *app ) {
   std::vector<std::string> names;
   for ( ; app; app = app->get_parent() )
      for ( const CLI::Option *option : app->get_options() )
         for ( const std::string &name : option->get_lnames() )
            names.push_back( "--" + name );
   return names;
}

// The command, or one above it, that has the option.
const CLI::App *withOption( const CLI::App *app, const std::string &name ) {
   while ( app && !app->get_option_no_throw( name ) )
      app = app->get_parent();
   return app;
}

} // namespace

std::string explain( const CLI::App &app, const CLI::ParseError &error ) {
   const CLI::App *innermost = &app;
   while ( !innermost->get_subcommands().empty() )
      innermost = innermost->get_subcommands().front();
   const std::vector<std::string> commands = commandsOf( *innermost );
   const std::vector<std::string> left = app.remaining( true );
   if ( left.empty() && !commands.empty() && dynamic_cast<const CLI::RequiredError *>( &error ) &&
        innermost->get_require_subcommand_min() > 0 )
      return fmt::format( "a command is missing. Commands: {}", fmt::join( commands, ", " ) );
   if ( left.empty() )
      return error.what();
   const std::string word = left[0].substr( 0, left[0].find( '=' ) );
   if ( const CLI::App *with = word.starts_with( "--" ) ? withOption( innermost, word ) : nullptr )
      return fmt::format( "{} has to stand behind {}", word, with->get_name() );
   if ( word.starts_with( "--" ) )
      return fmt::format( "{} is not an option{}", word,
                          BoardFiles::didYouMean( word, optionsOf( innermost ) ) );
   if ( commands.empty() || word.starts_with( '-' ) )
      return error.what();
   return fmt::format( "{} is not a command{}. Commands: {}", word,
                       BoardFiles::didYouMean( word, commands ), fmt::join( commands, ", " ) );
}

bool report( const CLI::App &app, const CLI::ParseError &end ) {
   if ( dynamic_cast<const CLI::Success *>( &end ) ) {
      app.exit( end );
      return true;
   }
   fmt::print( stderr, "{}: {}\nRun with --help for more information.\n", app.get_name(),
               explain( app, end ) );
   return false;
}

} // namespace CommandLine
