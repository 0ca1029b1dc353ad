#include "PlatformLibrary/PLSocket.h"
namespace PlatformLibrary {
PLSocket::PLSocket() = default;
PLSocket::~PLSocket() = default;
int PLSocket::setup() { return -1; }
int PLSocket::sendRequestWait( Smbus::TransactionRequest *, Smbus::TransactionResponse ** ) {
   return -1;
}
} // namespace PlatformLibrary
