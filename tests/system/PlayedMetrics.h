// What Prometheus would have scraped while a scenario of the board played: the clock is turned by
// hand.
#pragma once

#include "WatchedBoard.h"

#include <map>
#include <set>
#include <string>
#include <vector>

class PlayedMetrics {
 public:
   static constexpr int interval = 5; // seconds

   // Plays it, does what a person does at its end, and goes on for so many seconds.
   PlayedMetrics( const std::string &scenario, int secondsAfter );

   // The texts of all scrapes.
   const std::vector<std::string> &scrapes() const { return scrapes_; }
   // How many seconds it took, and those behind it.
   int seconds() const { return static_cast<int>( scrapes_.size() - 1 ) * interval; }

   // A part of a file for `promtool test rules`: each series of these families with all its
   // samples. One that goes is marked as stale, as a scrape without it does.
   std::string inputSeries( const std::set<std::string> &families ) const;

 private:
   std::vector<std::string> scrapes_{};
};
