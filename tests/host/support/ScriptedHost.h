#pragma once

#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <string>
#include <vector>

// A run of orbis-host with the scripted plug-in. The scripts are in `folder`. The output goes to
// out.txt and err.txt there, or to a terminal.
class ScriptedHost : public TestSupport::StartedProgram {
 public:
   enum class Output { Files, Terminal };

   ScriptedHost( const TestSupport::PrivateFolder &folder,
                 const std::vector<std::string> &arguments, Output output = Output::Files );
   // The same, with the socket of the serve that runs in another folder.
   ScriptedHost( const TestSupport::PrivateFolder &folder,
                 const std::vector<std::string> &arguments,
                 const TestSupport::PrivateFolder &serve );

   // The process with the plug-in, or -1.
   pid_t child() const;
};
