// The name that somebody probably meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace BoardFiles {

// ` (did you mean "NAME"?)` for the name that is most like the word, empty when none is near.
std::string didYouMean( std::string_view word, const std::vector<std::string> &names );

} // namespace BoardFiles
