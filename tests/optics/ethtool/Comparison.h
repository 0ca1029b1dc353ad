// A module as we decode it beside what ethtool prints of it, field by field.
#pragma once

#include "Ethtool.h"

#include <map>
#include <set>

namespace OpticsTest {

class Comparison {
 public:
   Comparison( const Bytes &file, Optics::Standard standard );

   const Bytes file;
   const Optics::Module module;

   // What is found of a line, one of these for each.
   void same( const Line &line );
   void differs( const Line &line, const std::string &reason ); // by mistake or choice of ethtool
   void wrong( const Line &line, const std::string &ours );

   // Ours as ethtool would print it.
   void expect( const Line &line, const std::string &ours );

   unsigned compared = 0;
   std::map<std::string, unsigned> differences;
   std::vector<std::string> mistakes;

   std::set<std::string> seen; // what of ours had a line
};

void compare( Comparison &comparison, const std::vector<Line> &lines );

// Each says whether the line is of its kind.
bool compareMonitor( Comparison &comparison, const Line &line );
bool compareSfp( Comparison &comparison, const Line &line );
bool compareQsfp( Comparison &comparison, const Line &line );
bool compareCmis( Comparison &comparison, const Line &line );
// What is alike in all three: codes and texts.
bool compareCommon( Comparison &comparison, const Line &line );
// Our monitors, and names in our lists, that no line was for.
void findMissing( Comparison &comparison );

// Our name for a name of ethtool's; nothing if it is not known.
std::optional<std::string> ourNameOf( const std::string &ethtools );
// The number of an extended compliance code.
std::optional<unsigned> extendedComplianceOf( const std::string &ethtools );

// "0x07 (LC)" beside our code, whose number is `shift` bits lower.
void compareCode( Comparison &comparison, const Line &line, const std::optional<Optics::Code> &ours,
                  unsigned shift = 0 );
// "Transceiver type", a name that is one of our lists.
void compareCompliance( Comparison &comparison, const Line &line, const std::string &prefix );
// A length of ours by its medium, as ethtool's number; 0 for none.
double lengthOf( const Optics::Module &module, const std::string &medium );

} // namespace OpticsTest
