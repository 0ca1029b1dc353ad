#pragma once

#include <string>
#include <vector>

namespace RealTest {

// Starts a program as cheaply as it can be done, and waits for its end. Nothing if it failed.
std::string outputOf( const std::vector<std::string> &command );

} // namespace RealTest
