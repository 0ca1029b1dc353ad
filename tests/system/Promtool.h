// Debian's tool that checks what Prometheus reads.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace Promtool {

bool isThere();
// What a test says where it isn't.
inline constexpr auto whySkipped = "promtool isn't there: apt-get install prometheus";

// What it complains of; empty: nothing.
std::string complaintOf( const std::vector<std::string> &words, const std::string &input = "" );

// An expression that is evaluated at a second, and the series that it has to give there, each as
// `{name="value"} 1`.
struct Question {
   int second = 0;
   std::string expression{};
   std::vector<std::string> series{};
};

// Has it evaluate these rules on the input series (of PlayedMetrics) each `interval` seconds, and
// gives what it complains of.
std::string complaintOfRules( const std::vector<std::string> &ruleFiles, int interval,
                              const std::string &inputSeries,
                              const std::vector<Question> &questions );

// What the first group of a pattern matches in these files, in their order.
std::vector<std::string> foundIn( const std::vector<std::string> &files,
                                  const std::string &pattern );
// The families that these files name.
std::set<std::string> familiesIn( const std::vector<std::string> &files );

} // namespace Promtool
