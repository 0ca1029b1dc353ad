#include "health/Inspection.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Health {

void Inspection::inspectRule( size_t number ) {
   const BoardFiles::BoardRule &rule = board_.rules[number];
   Finding finding{ .kind = Finding::Kind::Rule, .key = rule.name };
   size_t good = 0, unknown = 0;
   std::map<std::string, std::string> words; // by the word that a member has
   for ( const size_t member : links_.members[number] ) {
      bool isBadMember = reach_[member] == Reach::Absent, isUnknown = false;
      for ( size_t i = 0; i < findings_.size(); ++i ) {
         const Finding &one = findings_[i];
         std::optional<size_t> at =
            one.object == noObject ? std::nullopt : std::optional( one.object );
         while ( at && *at != member )
            at = links_.on[*at];
         if ( !at )
            continue;
         const bool isUnread =
            one.kind == Finding::Kind::Unreadable || one.kind == Finding::Kind::Chip;
         // A supply that gives power again still tells what has been.
         const bool isOver = one.kind == Finding::Kind::Supply && one.level != Level::Critical;
         if ( isOver )
            continue;
         if ( isUnread && one.object == member )
            isUnknown = true;
         else if ( !isUnread && ( one.object == member || one.level == Level::Critical ) )
            isBadMember = true;
         else
            continue;
         finding.explainedBy.push_back( i );
      }
      good += !isBadMember && !isUnknown;
      unknown += !isBadMember && isUnknown;
      const ValueReport *text = report_[member].find( presence );
      const auto *says = text ? std::get_if<std::string>( &text->reading.value ) : nullptr;
      for ( const std::string &word : rule.same )
         if ( says && reach_[member] == Reach::Good && says->find( word ) != std::string::npos )
            words[word] += ( words[word].empty() ? "" : ", " ) + report_[member].name;
   }
   rules_.push_back( { .good = good, .unknown = unknown } );
   if ( rule.wanted > good ) {
      const bool isSure = rule.wanted > good + unknown;
      finding.level = rule.needed > good + unknown ? Level::Critical
                      : isSure                     ? Level::Warning
                                                   : Level::Indeterminate;
      finding.words =
         fmt::format( "{} of {} wanted, {} good", rule.wanted, rule.members.size(), good );
      if ( unknown > 0 )
         finding.words += fmt::format( ", {} not known", unknown );
      add( finding );
   }
   if ( words.size() < 2 )
      return;
   std::vector<std::string> parts;
   for ( const auto &[word, who] : words )
      parts.push_back( fmt::format( "{}: {}", word, who ) );
   add( { .kind = Finding::Kind::Rule,
          .key = rule.name,
          .words = fmt::format( "not all are the same: {}", fmt::join( parts, "; " ) ) } );
}

} // namespace Health
