// Asio's and Beast's own code, compiled once for all programs.
#include <boost/asio/impl/src.hpp>
#include <boost/beast/src.hpp>
