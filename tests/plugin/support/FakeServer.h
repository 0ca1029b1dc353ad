// Replaces PLSocket: keeps the requests of the plug-in and returns the answers that a test sets.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "PlatformLibrary/PLSocket.h"

#include <functional>
#include <string>
#include <vector>

namespace FakeServer {

// The number of set-ups that fail from now on.
extern int failingSetups;
// The members of a socket after a failed set-up.
extern int failedDescriptor;
extern pl_fd_watcher_handle failedWatcher;
extern int setups, socketsMade, socketsReleased;
extern unsigned secondsSlept; // by the plug-in, whose sleeps return at once here
extern int signals;           // the number of sleeps that a signal ends from now on

extern std::vector<Smbus::TransactionRequest> received;
extern bool keepsRequests;
// The data of the responses of each answer. By default: one empty response for each request.
extern std::function<int( Smbus::TransactionRequest *, Smbus::TransactionResponse ** )> answer;

void reset();

// Answers with these data, one for each response.
void answersWith( std::vector<std::string> data );

// One request as text: "write 0x70 reg 0x1 bus 2 accel 1 scd pci 4 len 0" and so on.
std::string inWords( const Smbus::Request &request );
// The last transaction, one request per line.
std::vector<std::string> lastInWords();

} // namespace FakeServer
