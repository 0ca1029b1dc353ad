// Stands in PLSocket's place: what the plug-in sends is kept, what it gets back is the test's word.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "PlatformLibrary/PLSocket.h"

#include <functional>
#include <string>
#include <vector>

namespace FakeServer {

// Each set-up fails while this is above 0, and counts it down.
extern int failingSetups;
// What a socket's members are after a failed set-up.
extern int failedDescriptor;
extern pl_fd_watcher_handle failedWatcher;
extern int setups, socketsMade, socketsReleased;
extern unsigned secondsSlept; // in sleep(), which takes no time here

extern std::vector<Smbus::TransactionRequest> received;
extern bool keepsRequests;
// The data of each answer's responses; one empty response a request when the test says nothing.
extern std::function<int( Smbus::TransactionRequest *, Smbus::TransactionResponse ** )> answer;

void reset();

// Answers with these data, one a response.
void answersWith( std::vector<std::string> data );

// One request in words: "write 0x70 reg 0x1 bus 2 accel 1 scd pci 4 len 0" and so on.
std::string inWords( const Smbus::Request &request );
// The last transaction, a request a line.
std::vector<std::string> lastInWords();

} // namespace FakeServer
