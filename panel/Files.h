// The files of the page that shows a board in a browser, as they were when this program was built.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Panel {

struct File {
   std::string_view name{}; // "main.js"
   std::string_view text{};
   std::string_view contentType{};
   std::string tag{}; // of this text alone: "\"1f0c...\"", as the header ETag has it
};

const std::vector<File> &files();

// Null when there is no such file.
const File *find( std::string_view name );

} // namespace Panel
