#include "Promtool.h"

#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace Promtool {

namespace {

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

void member( Json &to, const char *key, const std::string &text ) {
   to.Key( key );
   to.String( text.c_str() );
}

void write( Json &to, const Question &question ) {
   to.StartObject();
   member( to, "expr", question.expression );
   member( to, "eval_time", fmt::format( "{}s", question.second ) );
   to.Key( "exp_samples" );
   to.StartArray();
   for ( const std::string &series : question.series ) {
      const size_t blank = series.rfind( ' ' );
      to.StartObject();
      member( to, "labels", series.substr( 0, blank ) );
      to.Key( "value" );
      to.Double( std::stod( series.substr( blank + 1 ) ) );
      to.EndObject();
   }
   to.EndArray();
   to.EndObject();
}

} // namespace

std::vector<std::string> foundIn( const std::vector<std::string> &files,
                                  const std::string &pattern ) {
   const std::regex wanted( pattern );
   std::vector<std::string> found;
   for ( const std::string &file : files ) {
      std::ifstream stream( file );
      const std::string text( ( std::istreambuf_iterator<char>( stream ) ), {} );
      for ( std::sregex_iterator one( text.begin(), text.end(), wanted ), end; one != end; ++one )
         found.push_back( one->str( 1 ) );
   }
   return found;
}

bool isThere() { return std::filesystem::exists( "/usr/bin/promtool" ); }

std::string complaintOf( const std::vector<std::string> &words, const std::string &input ) {
   const TestSupport::PrivateFolder folder;
   std::vector<std::string> command{ "/bin/sh", "-c", R"(exec promtool "$@" <"$0")",
                                     folder.write( "input", input ) };
   command.insert( command.end(), words.begin(), words.end() );
   TestSupport::StartedProgram promtool( command );
   const int code = promtool.wait();
   return code == 0 ? "" : promtool.output() + promtool.errors();
}

std::string complaintOfRules( const std::vector<std::string> &ruleFiles, int interval,
                              const std::string &inputSeries,
                              const std::vector<Question> &questions ) {
   rapidjson::StringBuffer buffer;
   Json to( buffer );
   to.StartObject();
   to.Key( "rule_files" );
   to.StartArray();
   for ( const std::string &file : ruleFiles )
      to.String( std::filesystem::absolute( file ).c_str() );
   to.EndArray();
   // As they stand there: else each run takes them in another order.
   to.Key( "group_eval_order" );
   to.StartArray();
   for ( const std::string &name : foundIn( ruleFiles, R"(- name: ([\w-]+))" ) )
      to.String( name.c_str() );
   to.EndArray();
   member( to, "evaluation_interval", fmt::format( "{}s", interval ) );
   to.Key( "tests" );
   to.StartArray();
   to.StartObject();
   member( to, "interval", fmt::format( "{}s", interval ) );
   to.Key( "input_series" );
   to.RawValue( inputSeries.c_str(), inputSeries.size(), rapidjson::kArrayType );
   to.Key( "promql_expr_test" );
   to.StartArray();
   for ( const Question &question : questions )
      write( to, question );
   to.EndArray();
   to.EndObject();
   to.EndArray();
   to.EndObject();
   const TestSupport::PrivateFolder folder;
   return complaintOf( { "test", "rules", folder.write( "test.yml", buffer.GetString() ) } );
}

std::set<std::string> familiesIn( const std::vector<std::string> &files ) {
   const auto found = foundIn( files, R"(\b((?:orbis|process)_\w+|up\b))" );
   return { found.begin(), found.end() };
}

} // namespace Promtool
