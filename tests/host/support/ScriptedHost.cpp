#include "support/ScriptedHost.h"

#include <fmt/format.h>
#include <fstream>

namespace {

using TestSupport::PrivateFolder;

std::vector<std::string> command( const std::vector<std::string> &arguments ) {
   std::vector<std::string> words{ ORBIS_HOST, "--plugin", SCRIPTED_PLUGIN, "--drivers",
                                   SCRIPTED_BOARD "/libScriptedPlugin.drivers.json" };
   words.insert( words.end(), arguments.begin(), arguments.end() );
   return words;
}

TestSupport::ProgramSettings settings( const PrivateFolder &folder, const PrivateFolder &serve,
                                       ScriptedHost::Output output ) {
   return { .outputFile = folder.file( "out.txt" ),
            .errorFile = folder.file( "err.txt" ),
            .onTerminal = output == ScriptedHost::Output::Terminal,
            .environment = { "SCRIPT=" + folder.path().string(),
                             "ORBIS_HOST_SOCKET=" + serve.file( "host.sock" ) } };
}

} // namespace

ScriptedHost::ScriptedHost( const PrivateFolder &folder, const std::vector<std::string> &arguments,
                            Output output )
   : StartedProgram( command( arguments ), settings( folder, folder, output ) ) {}

ScriptedHost::ScriptedHost( const PrivateFolder &folder, const std::vector<std::string> &arguments,
                            const PrivateFolder &serve )
   : StartedProgram( command( arguments ), settings( folder, serve, Output::Files ) ) {}

pid_t ScriptedHost::child() const {
   std::ifstream children( fmt::format( "/proc/{0}/task/{0}/children", pid() ) );
   pid_t child = -1;
   return children >> child ? child : -1;
}
